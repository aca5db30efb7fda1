"""The version of the library that the package is built from."""

from ._core import __version__ as __version__
