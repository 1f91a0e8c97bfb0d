// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/cmyk.h"

#include <lcms2.h>

#include <memory>

#include "tools/photo/metadata.h"

namespace korvane {
namespace {

constexpr size_t kMaxChunkPixels = size_t{1} << 20;

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;
using Transform = std::unique_ptr<void, decltype(&cmsDeleteTransform)>;

Transform make_transform(const Bytes& icc, bool isInverted) {
    Transform none(nullptr, cmsDeleteTransform);
    if (icc_space(icc) != IccSpace::kCmyk) {
        return none;
    }
    const Profile from(cmsOpenProfileFromMem(icc.data(), static_cast<cmsUInt32Number>(icc.size())), cmsCloseProfile);
    const Profile to(cmsCreate_sRGBProfile(), cmsCloseProfile);
    if (from == nullptr || to == nullptr) {
        return none;
    }
    return {cmsCreateTransform(from.get(), isInverted ? TYPE_CMYK_8_REV : TYPE_CMYK_8, to.get(), TYPE_RGB_8,
                               INTENT_PERCEPTUAL, cmsFLAGS_BLACKPOINTCOMPENSATION),
            cmsDeleteTransform};
}

void convert_plainly(const unsigned char* ink, unsigned char* rgb, size_t pixels, bool isInverted) {
    const unsigned int flip = isInverted ? 0 : 255;
    for (size_t i = 0; i < pixels; ++i, ink += 4, rgb += 3) {
        const unsigned int light = ink[3] ^ flip;
        for (size_t c = 0; c < 3; ++c) {
            rgb[c] = static_cast<unsigned char>(((ink[c] ^ flip) * light + 127) / 255);
        }
    }
}

}  // namespace

void convert_cmyk(Photo& photo, bool isInverted) {
    auto_ptr<Image> rgb = make_image(photo.image->getWidth(), photo.image->getHeight(), IMAGE_FORMAT_TYPE_RGB);
    const Transform transform = make_transform(photo.metadata.icc, isInverted);
    const size_t count = photo.pixelCount();
    for (size_t done = 0; done < count; done += kMaxChunkPixels) {
        const size_t chunk = std::min(kMaxChunkPixels, count - done);
        const unsigned char* from = photo.pixels() + done * 4;
        unsigned char* to = rgb->getPlanes()[0] + done * 3;
        if (transform != nullptr) {
            cmsDoTransform(transform.get(), from, to, static_cast<cmsUInt32Number>(chunk));
        } else {
            convert_plainly(from, to, chunk, isInverted);
        }
    }
    photo.image = rgb;
    photo.metadata.icc.clear();
}

}  // namespace korvane
