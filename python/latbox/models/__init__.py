"""Models and their texts: readers of .opt, CPLEX LP and MPS, the writer of .opt programs and their map of names."""

from .model import INF, Bound, Goal, Model, Note, Row, Variable
from .mps import MpsDialect
from .reading import read_model, read_text
from .sources import FORMATS

__all__ = ["INF", "Bound", "Goal", "Model", "Note", "Row", "Variable", "FORMATS", "MpsDialect", "read_model", "read_text"]
