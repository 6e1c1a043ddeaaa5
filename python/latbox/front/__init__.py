"""The command latbox-solve: options, what is shown while it works, the answer."""
