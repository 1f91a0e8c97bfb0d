// SPDX-License-Identifier: Apache-2.0
// JpegDecoder: JPEG to Image through libjpeg.
//
// A grayscale file gives a GRAY image, a YCbCr or RGB file an RGB one, each with depth 1. A CMYK or YCCK file decodes
// to format NONE, an image with its size and no pixels.
//
// Decoding starts with the stream's rewind(), so it needs a stream that rewinds: a FileStream does, a JavaInputStream
// only says so (it must stand at the file's start), a MemoryStream refuses and the decode fails. libjpeg may use 30 MiB
// of working memory; a progressive file of more than about 10 megapixels needs more and is refused.
#ifndef KORVANE_FRAMEWORKS_IMAGES_JPEG_DECODER_H_
#define KORVANE_FRAMEWORKS_IMAGES_JPEG_DECODER_H_

#include "frameworks/images/image_decoder.h"

class KORVANE_API JpegDecoder : public ImageDecoder {
  public:
    // Reads 3 bytes; true for FF D8 FF.
    bool isSupported(auto_ptr<Stream>& stream) override;

    // False, with the image as it was, when the stream ends before the last line, when the picture needs more than
    // 2^32 - 1 bytes, or on any of libjpeg's fatal errors, which also gives one line in the log. Damage that libjpeg
    // only warns about (bad entropy-coded data, a misplaced end marker) still gives a picture.
    bool onDecode(auto_ptr<Stream>& stream, auto_ptr<Image>& image) override;
};

#endif  // KORVANE_FRAMEWORKS_IMAGES_JPEG_DECODER_H_
