"""latbox: small, hard integer models, solved by lattice reduction and complete search. See latbox.solve and latbox.read."""

from . import errors
from .api import Model, Point, Result, matrix_model, read, solve
from .errors import EngineError, InternalError, LatboxError, ModelError, ReadError, UsageError
from .version import version as _version

__version__ = _version()

__all__ = ["Model", "Point", "Result", "matrix_model", "read", "solve", "errors", "EngineError", "InternalError", "LatboxError",
           "ModelError", "ReadError", "UsageError", "__version__"]
