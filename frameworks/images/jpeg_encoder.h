// SPDX-License-Identifier: Apache-2.0
// JpegEncoder: Image to baseline JPEG through libjpeg.
//
// GRAY, RGB, RGBA (alpha dropped) and packed YUV images can be written; every file has three components, also that of
// a GRAY image. The bytes of a YUV image are taken as if they were R, G, B: convert it to RGB first if its colours
// matter.
#ifndef KORVANE_FRAMEWORKS_IMAGES_JPEG_ENCODER_H_
#define KORVANE_FRAMEWORKS_IMAGES_JPEG_ENCODER_H_

#include "frameworks/images/image_encoder.h"

class KORVANE_API JpegEncoder : public ImageEncoder {
  public:
    // False, with the stream untouched, for any other image format or an image without pixels. libjpeg's fatal errors
    // (a side of 0 or above 65500 pixels, a stream that takes no more bytes) give false and one line in the log.
    bool onEncode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality) override;
};

#endif  // KORVANE_FRAMEWORKS_IMAGES_JPEG_ENCODER_H_
