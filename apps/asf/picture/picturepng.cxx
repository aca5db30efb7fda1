#include <apps/asf/picture/picturepng.h>

#include <algorithm>
#include <cmath>

#ifdef QEX_WITH_PNG
#include <kbaselib/kbase/ksystem.h>
#include <librsvg/rsvg.h>
#endif

namespace asfapp
{

namespace
{

constexpr double kMaxSide = 32767;  // Pixels; a limit of cairo.
constexpr double kMaxPixels = 64e6; // 256 MB while drawing.

} // namespace

int MaxPngWidth(double pWidth, double pHeight)
{
    const double lFactor = std::min({kMaxSide / pWidth, kMaxSide / pHeight, std::sqrt(kMaxPixels / (pWidth * pHeight))});
    // One less, because the height is rounded.
    return static_cast<int>(lFactor >= 1 ? std::ceil(pWidth) : std::floor(pWidth * lFactor) - 1);
}

#ifdef QEX_WITH_PNG

namespace
{

/// librsvg and the libraries that it uses, loaded when the first PNG is drawn. Linked to the program, its 47 libraries would take 20 ms
/// of every start; reading a skeleton takes 1 ms.
class KRsvg
{
public:
    /// False, with the reason in \p pError, if a library or a function is missing.
    bool Load(std::string& pError)
    {
        const qexsdk::KSystemCalls& lCalls = qexsdk::KSystemInUse();
        // Never closed: the libraries do not support it.
        mLibrary = lCalls.mOpenLibrary("rsvg-2", 2);
        const bool lOk = mLibrary != nullptr && Find("g_memory_input_stream_new_from_data", mNewStream) && Find("g_object_unref", mUnref) &&
                         Find("g_error_free", mFreeError) && Find("rsvg_handle_new_from_stream_sync", mNewHandle) &&
                         Find("rsvg_handle_render_document", mRender) && Find("cairo_image_surface_create", mNewSurface) &&
                         Find("cairo_surface_status", mSurfaceStatus) && Find("cairo_surface_destroy", mDestroySurface) &&
                         Find("cairo_create", mNewContext) && Find("cairo_destroy", mDestroyContext) &&
                         Find("cairo_set_source_rgb", mSetColor) && Find("cairo_paint", mPaint) &&
                         Find("cairo_surface_write_to_png_stream", mWritePng) && Find("cairo_status_to_string", mStatusText);
        pError = lOk ? "" : std::string("librsvg cannot be loaded: ") + lCalls.mLibraryReason();
        return lOk;
    }

    decltype(&g_memory_input_stream_new_from_data) mNewStream = nullptr;
    decltype(&g_object_unref)                      mUnref = nullptr;
    decltype(&g_error_free)                        mFreeError = nullptr;
    decltype(&rsvg_handle_new_from_stream_sync)    mNewHandle = nullptr;
    decltype(&rsvg_handle_render_document)         mRender = nullptr;
    decltype(&cairo_image_surface_create)          mNewSurface = nullptr;
    decltype(&cairo_surface_status)                mSurfaceStatus = nullptr;
    decltype(&cairo_surface_destroy)               mDestroySurface = nullptr;
    decltype(&cairo_create)                        mNewContext = nullptr;
    decltype(&cairo_destroy)                       mDestroyContext = nullptr;
    decltype(&cairo_set_source_rgb)                mSetColor = nullptr;
    decltype(&cairo_paint)                         mPaint = nullptr;
    decltype(&cairo_surface_write_to_png_stream)   mWritePng = nullptr;
    decltype(&cairo_status_to_string)              mStatusText = nullptr;

private:
    template <typename TFunction>
    bool Find(const char* pName, TFunction& pFunction)
    {
        pFunction = reinterpret_cast<TFunction>(qexsdk::KSystemInUse().mFindFunction(mLibrary, pName));
        return pFunction != nullptr;
    }

    void* mLibrary = nullptr;
};

/// Appends to the std::string at \p pOut. cairo is C: no exception may pass it.
cairo_status_t AppendPng(void* pOut, const unsigned char* pBytes, unsigned pSize) noexcept
{
    try
    {
        static_cast<std::string*>(pOut)->append(reinterpret_cast<const char*>(pBytes), pSize);
        return CAIRO_STATUS_SUCCESS;
    }
    catch (const std::exception&)
    {
        return CAIRO_STATUS_NO_MEMORY;
    }
}

/// Draws onto \p pSurface; "" or an error text.
std::string Render(const KRsvg& pRsvg, const qexsdk::KQexSvg& pSvg, const RsvgRectangle& pSize, cairo_surface_t* pSurface)
{
    GError*       lError = nullptr;
    GInputStream* lStream = pRsvg.mNewStream(pSvg.mText.data(), static_cast<gssize>(pSvg.mText.size()), nullptr);
    // Unlimited: a picture of many poses is longer than librsvg expects of a file from the net.
    RsvgHandle* lHandle = pRsvg.mNewHandle(lStream, nullptr, RSVG_HANDLE_FLAG_UNLIMITED, nullptr, &lError);
    cairo_t*    lContext = pRsvg.mNewContext(pSurface);
    // The picture's size is a fraction of a pixel off; without this, its edges would be dark.
    pRsvg.mSetColor(lContext, (qexsdk::kPictureBackground >> 16) / 255.0, (qexsdk::kPictureBackground >> 8 & 255) / 255.0,
                    (qexsdk::kPictureBackground & 255) / 255.0);
    pRsvg.mPaint(lContext);
    if (lHandle != nullptr)
    {
        pRsvg.mRender(lHandle, lContext, &pSize, &lError);
        pRsvg.mUnref(lHandle);
    }
    pRsvg.mDestroyContext(lContext);
    pRsvg.mUnref(lStream);
    const std::string lText = lError != nullptr ? std::string("librsvg: ") + lError->message : std::string();
    if (lError != nullptr)
    {
        pRsvg.mFreeError(lError);
    }
    return lText;
}

} // namespace

bool IsPngBuiltIn()
{
    return true;
}

std::string DrawPng(const qexsdk::KQexSvg& pSvg, std::string& pPng)
{
    pPng.clear();
    KRsvg       lRsvg;
    std::string lError;
    if (!lRsvg.Load(lError))
    {
        return lError;
    }
    const int           lWidth = static_cast<int>(std::max(std::lround(pSvg.mWidth), 1L));
    const int           lHeight = static_cast<int>(std::max(std::lround(pSvg.mHeight), 1L));
    const RsvgRectangle lSize{0, 0, static_cast<double>(lWidth), static_cast<double>(lHeight)};
    // The format without transparency, so that the background is opaque to the edge.
    cairo_surface_t* lSurface = lRsvg.mNewSurface(CAIRO_FORMAT_RGB24, lWidth, lHeight);
    cairo_status_t   lStatus = lRsvg.mSurfaceStatus(lSurface);
    lError = lStatus == CAIRO_STATUS_SUCCESS ? Render(lRsvg, pSvg, lSize, lSurface) : "";
    if (lError.empty() && lStatus == CAIRO_STATUS_SUCCESS)
    {
        lStatus = lRsvg.mWritePng(lSurface, AppendPng, &pPng);
    }
    lRsvg.mDestroySurface(lSurface);
    if (lStatus != CAIRO_STATUS_SUCCESS)
    {
        lError = std::string("cairo: ") + lRsvg.mStatusText(lStatus);
    }
    if (!lError.empty())
    {
        pPng.clear();
    }
    return lError;
}

#else

bool IsPngBuiltIn()
{
    return false;
}

std::string DrawPng(const qexsdk::KQexSvg&, std::string& pPng)
{
    pPng.clear();
    return "this build writes no PNG";
}

#endif

} // namespace asfapp
