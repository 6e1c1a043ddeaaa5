"""python3 -m latbox is latbox-solve."""

import sys

from .front.command import main

sys.exit(main())
