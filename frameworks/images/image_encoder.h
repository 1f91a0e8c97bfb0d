// SPDX-License-Identifier: Apache-2.0
// ImageEncoder: writes an Image to a Stream in some file format.
//
// Encoders keep nothing between calls: one object may serve several threads at once as long as each call has a stream
// and an image of its own.
#ifndef KORVANE_FRAMEWORKS_IMAGES_IMAGE_ENCODER_H_
#define KORVANE_FRAMEWORKS_IMAGES_IMAGE_ENCODER_H_

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/images/image.h"
#include "frameworks/io/stream.h"

class KORVANE_API ImageEncoder : public RefBase {
  public:
    // The fixed type makes every int a valid value.
    enum Type : int {
        IMAGE_ENCODER_TYPE_NONE = 0,
        IMAGE_ENCODER_TYPE_JPEG = 1,
        IMAGE_ENCODER_TYPE_MAX = 2,
    };

    // Writes `image` at the stream's position. `quality` means what the format makes of it (JPEG: 1 to 100, clamped).
    // False when a holder is empty, when the format cannot carry the image, when writing failed or when memory is
    // short; the stream may then hold a partial file. The stream is flushed at the end, and neither closed nor kept.
    bool encode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality);

    // The work of `encode`; both holders are filled.
    virtual bool onEncode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality) = 0;
};

#endif  // KORVANE_FRAMEWORKS_IMAGES_IMAGE_ENCODER_H_
