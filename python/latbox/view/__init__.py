"""A page to leave open beside a run: a server on the loopback address, in a process of its own, that shows events and takes orders.

`link` is what a run holds of it, `follow` serves a log; `server` is the loop, `request` judges what comes in, `history` keeps what a
page needs, `purse` keeps it cheap, `console_log` reads the console solver's log as events. `page/` is the page.
"""
