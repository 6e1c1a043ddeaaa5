"""The command latbox-farm: the pieces of a complete search on many machines, and the verdict that they make together."""
