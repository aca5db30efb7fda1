#ifndef PYTHON_CORE_COREMODULE_H
#define PYTHON_CORE_COREMODULE_H

#include <qexclip/kqexclip.h>

#include <pybind11/pybind11.h>

#include <memory>
#include <string>

/// \file
/// The extension module qex._core. It has what is computed in C++, without defaults and words: the package's Python modules have those,
/// and all that users see.

namespace qexpython
{

/// A clip as Python objects share it.
using KClipPointer = std::shared_ptr<qexsdk::KQexClip>;

/// Adds the class Clip: its arrays and what is computed from them.
void AddClip(pybind11::module_& pModule);

/// Adds the steps from clip to clip.
void AddSteps(pybind11::module_& pModule);

/// Adds writing and drawing.
void AddSaving(pybind11::module_& pModule);

/// Adds reading and checking of files.
void AddFiles(pybind11::module_& pModule);

} // namespace qexpython

#endif
