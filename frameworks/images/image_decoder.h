// SPDX-License-Identifier: Apache-2.0
// ImageDecoder: reads an Image from a Stream in some file format.
//
// Decoders keep nothing between calls: one object may serve several threads at once as long as each call has a stream
// and an image of its own.
#ifndef KORVANE_FRAMEWORKS_IMAGES_IMAGE_DECODER_H_
#define KORVANE_FRAMEWORKS_IMAGES_IMAGE_DECODER_H_

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/images/image.h"
#include "frameworks/io/stream.h"

class KORVANE_API ImageDecoder : public RefBase {
  public:
    // Refills an existing image. False when a holder is empty, when the stream holds no whole picture or when memory is
    // short; the image is then as it was. The stream is neither closed nor kept.
    bool decode(auto_ptr<Stream>& stream, auto_ptr<Image>& image);

    // True when the stream's next bytes are this decoder's file format. Consumes the bytes that it looks at.
    virtual bool isSupported(auto_ptr<Stream>& stream) = 0;

    // The work of `decode`; both holders are filled.
    virtual bool onDecode(auto_ptr<Stream>& stream, auto_ptr<Image>& image) = 0;
};

#endif  // KORVANE_FRAMEWORKS_IMAGES_IMAGE_DECODER_H_
