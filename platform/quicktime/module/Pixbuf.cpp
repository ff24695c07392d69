// platform/quicktime/module/Pixbuf.cpp
//
// The image module: gdk-pixbuf behind two calls. The layer loads it when it needs it.
#include <gdk-pixbuf/gdk-pixbuf.h>

#include <memory>

#include "platform/base/Guard.h"
#include "platform/quicktime/Completeness.h"
#include "platform/quicktime/ImageModule.h"

namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using ObjectPtr = std::unique_ptr<T, Unref>;

constexpr std::size_t kPiece = std::size_t{64} * 1024;

struct Limit {
    std::uint64_t mostPixels;
    bool isRefused;
};

// Runs when the header is read and before memory is taken for the pixels.
void CheckSize(GdkPixbufLoader* loader, int width, int height, gpointer data)
{
    Limit& limit = *static_cast<Limit*>(data);
    const bool isAllowed = IsSizeAllowed(width, height) &&
                           static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) <= limit.mostPixels;
    if (isAllowed)
        return;
    limit.isRefused = true;
    gdk_pixbuf_loader_set_size(loader, 0, 0); // tells the decoder to stop
}

bool Load(GdkPixbufLoader* loader, Bytes file, const Limit& limit)
{
    bool isGood = true;
    for (std::size_t at = 0; at < file.size && isGood && !limit.isRefused; at += kPiece)
        isGood = gdk_pixbuf_loader_write(loader, file.data + at, std::min(kPiece, file.size - at), nullptr) != FALSE;
    // Always closed: a loader that is dropped open complains.
    const bool isClosed = gdk_pixbuf_loader_close(loader, nullptr) != FALSE;
    return isGood && isClosed && !limit.isRefused;
}

void CopyPixels(const GdkPixbuf* picture, Raster& pixels)
{
    pixels.width = gdk_pixbuf_get_width(picture);
    pixels.height = gdk_pixbuf_get_height(picture);
    const bool hasAlpha = gdk_pixbuf_get_has_alpha(picture) != FALSE;
    const auto channels = static_cast<std::size_t>(gdk_pixbuf_get_n_channels(picture));
    const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(picture));
    const guchar* const bytes = gdk_pixbuf_read_pixels(picture);
    pixels.argb.resize(static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height));
    std::uint32_t* to = pixels.argb.data();
    for (std::size_t y = 0; y < static_cast<std::size_t>(pixels.height); ++y) {
        const guchar* from = bytes + y * stride;
        for (int x = 0; x < pixels.width; ++x, from += channels)
            *to++ = PremultipliedPixel(hasAlpha ? from[3] : 255, from[0], from[1], from[2]);
    }
}

bool Decode(Bytes file, std::uint64_t mostPixels, Raster& pixels)
{
    return Guarded(false, [&] {
        if (!IsCompleteImageFile(file))
            return false;
        const ObjectPtr<GdkPixbufLoader> loader(gdk_pixbuf_loader_new());
        Limit limit = {mostPixels, false};
        g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(CheckSize), &limit);
        if (!Load(loader.get(), file, limit))
            return false;
        const GdkPixbuf* const picture = gdk_pixbuf_loader_get_pixbuf(loader.get()); // the loader's own
        if (!picture || !IsSizeAllowed(gdk_pixbuf_get_width(picture), gdk_pixbuf_get_height(picture)))
            return false;
        Raster decoded;
        CopyPixels(picture, decoded);
        pixels = std::move(decoded);
        return true;
    });
}

void WriteRow(const std::uint32_t* from, int width, bool hasAlpha, guchar* to)
{
    for (int x = 0; x < width; ++x) {
        const std::uint32_t alpha = from[x] >> 24U;
        for (unsigned shift = 24; shift > 0; shift -= 8) {
            const std::uint32_t value = (from[x] >> (shift - 8)) & 0xFFU;
            *to++ = static_cast<guchar>(alpha == 0 ? 0 : std::min(255U, (value * 255 + alpha / 2) / alpha));
        }
        if (hasAlpha)
            *to++ = static_cast<guchar>(alpha);
    }
}

bool EncodePng(const std::uint32_t* argb, int width, int height, bool hasAlpha, std::string& file)
{
    return Guarded(false, [&] {
        const ObjectPtr<GdkPixbuf> picture(
            gdk_pixbuf_new(GDK_COLORSPACE_RGB, hasAlpha ? TRUE : FALSE, 8, width, height));
        if (!picture)
            return false;
        guchar* const pixels = gdk_pixbuf_get_pixels(picture.get());
        const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(picture.get()));
        for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y)
            WriteRow(argb + y * static_cast<std::size_t>(width), width, hasAlpha, pixels + y * stride);
        gchar* bytes = nullptr;
        gsize size = 0;
        if (!gdk_pixbuf_save_to_bufferv(picture.get(), &bytes, &size, "png", nullptr, nullptr, nullptr))
            return false;
        const std::unique_ptr<gchar, decltype(&g_free)> owned(bytes, g_free);
        file.assign(bytes, size);
        return true;
    });
}

constexpr ImageModuleCalls kCalls = {Decode, EncodePng};

} // namespace

extern "C" __attribute__((visibility("default"))) const ImageModuleCalls* cv_image_module_1()
{
    return &kCalls;
}
