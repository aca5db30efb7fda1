"""The examples of the docstrings."""

import doctest
import importlib
import inspect
import pkgutil

import numpy as np
import pytest
import qex

from conftest import load

MODULES = ["qex"] + [f"qex.{module.name}" for module in pkgutil.iter_modules(qex.__path__) if module.name != "_core"]


@pytest.mark.parametrize("name", MODULES)
def test_examples(name):
    names = {"qex": qex, "np": np, "clip": load("samples/walk.amc")}
    result = doctest.testmod(importlib.import_module(name), extraglobs=names, optionflags=doctest.NORMALIZE_WHITESPACE)
    assert result.failed == 0


def test_everything_public_is_described():
    for name in qex.__all__:
        thing = getattr(qex, name)
        assert thing.__doc__, name
        for member, value in members_of(thing):
            assert ">>>" in (value.__doc__ or ""), f"{name}.{member}"
    assert len(members_of(qex.Clip)) > 20


def members_of(thing):
    """The public methods and properties of a class that it has not from Python."""
    bases = [base for base in getattr(thing, "__mro__", ()) if base.__module__.startswith("qex")]
    members = [(name, value) for base in bases for name, value in vars(base).items() if not name.startswith("_")]
    return [(name, value) for name, value in members if isinstance(value, (property, classmethod)) or inspect.isfunction(value)]
