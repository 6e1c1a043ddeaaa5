"""The programs of the gallery, by field; make_gallery.py writes them."""
