#ifndef PYTHON_CORE_COREARRAYS_H
#define PYTHON_CORE_COREARRAYS_H

#include <python/core/corelock.h>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <algorithm>
#include <memory>
#include <new>
#include <numeric>
#include <utility>
#include <vector>

/// \file
/// Arrays for Python: views of numbers that a clip keeps, and arrays of computed ones.

namespace qexpython
{

namespace py = pybind11;

using KShape = std::vector<Py_ssize_t>;

/// A read-only array of \p pShape whose numbers stay where they are: it keeps \p pOwner alive.
template <typename TNumber>
py::array MakeView(const TNumber* pNumbers, const KShape& pShape, const py::object& pOwner)
{
    py::array_t<TNumber> lArray(pShape, pNumbers, pOwner);
    lArray.attr("setflags")(py::arg("write") = false);
    return std::move(lArray);
}

/// A new array of \p pShape, whose first axis is frames. \p pCompute(first, count, numbers) writes the numbers of frames and is false when
/// memory runs out; it is called for at most \p pBlock frames at once, without Python's lock.
template <typename TNumber, typename TCompute>
py::array ComputeAs(const KShape& pShape, long long pBlock, const TCompute& pCompute)
{
    const long long      lFrames = pShape[0];
    const size_t         lRow = std::accumulate(pShape.begin() + 1, pShape.end(), size_t(1),
                                                [](size_t pProduct, Py_ssize_t pSize) { return pProduct * static_cast<size_t>(pSize); });
    py::array_t<TNumber> lResult(pShape);
    TNumber*             lOut = lResult.mutable_data();
    {
        const KWithoutLock              lWithout;
        const std::unique_ptr<double[]> lBlock(new double[static_cast<size_t>(std::min(pBlock, lFrames)) * lRow]);
        for (long long lFirst = 0; lFirst < lFrames; lFirst += pBlock)
        {
            const long long lCount = std::min(pBlock, lFrames - lFirst);
            if (!pCompute(lFirst, lCount, lBlock.get()))
            {
                throw std::bad_alloc();
            }
            lOut = std::transform(lBlock.get(), lBlock.get() + static_cast<size_t>(lCount) * lRow, lOut,
                                  [](double pNumber) { return static_cast<TNumber>(pNumber); });
        }
    }
    return std::move(lResult);
}

/// ComputeAs() in double or single precision.
template <typename TCompute>
py::array Compute(bool pIsDouble, const KShape& pShape, long long pBlock, const TCompute& pCompute)
{
    return pIsDouble ? ComputeAs<double>(pShape, pBlock, pCompute) : ComputeAs<float>(pShape, pBlock, pCompute);
}

} // namespace qexpython

#endif
