"""The examples of the docstrings."""

import doctest
import importlib
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
        for member, value in vars(thing).items() if isinstance(thing, type) else ():
            if not member.startswith("_") and (callable(value) or isinstance(value, property)):
                assert ">>>" in (value.__doc__ or ""), f"{name}.{member}"
