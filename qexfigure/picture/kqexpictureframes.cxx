#include <qexfigure/picture/kqexpictureframes.h>

#include <qexfigure/picture/kqexpicturelayout.h>

namespace qexsdk
{

namespace
{

/// The index of part \p pPart of \p pParts between the first and the last of \p pCount frames.
size_t PlaceOf(size_t pPart, size_t pParts, size_t pCount)
{
    return (pCount - 1) * pPart / pParts;
}

} // namespace

std::vector<size_t> DefaultPictureFrames(size_t pCount)
{
    constexpr size_t    kParts = 4;
    std::vector<size_t> lFrames;
    for (size_t lPart = 0; pCount > 0 && lPart <= kParts; ++lPart)
    {
        const size_t lFrame = PlaceOf(lPart, kParts, pCount);
        if (lFrames.empty() || lFrames.back() != lFrame)
        {
            lFrames.push_back(lFrame);
        }
    }
    return lFrames;
}

size_t MaxPicturePoses()
{
    return static_cast<size_t>(kWidestRow - 2 * kMargin);
}

size_t LimitPictureFrames(std::vector<size_t>& pFrames)
{
    const size_t lMax = MaxPicturePoses();
    const size_t lCount = pFrames.size();
    if (lCount <= lMax)
    {
        return 0;
    }
    for (size_t lKept = 0; lKept < lMax; ++lKept)
    {
        // Never before lKept, so no frame is overwritten that is still wanted.
        pFrames[lKept] = pFrames[PlaceOf(lKept, lMax - 1, lCount)];
    }
    pFrames.resize(lMax);
    return lCount - lMax;
}

} // namespace qexsdk
