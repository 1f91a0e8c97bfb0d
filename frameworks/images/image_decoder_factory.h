// SPDX-License-Identifier: Apache-2.0
// ImageDecoderFactory: finds the decoder for a stream by its first bytes.
#ifndef KORVANE_FRAMEWORKS_IMAGES_IMAGE_DECODER_FACTORY_H_
#define KORVANE_FRAMEWORKS_IMAGES_IMAGE_DECODER_FACTORY_H_

#include <vector>

#include "frameworks/images/image_decoder.h"

class KORVANE_API ImageDecoderFactory : public RefBase {
  public:
    // When memory is short it has no decoders and knows no stream.
    ImageDecoderFactory();

    // The first registered decoder that knows the stream's next bytes; null for a null stream or an unknown format.
    // The factory owns the decoder, which stays valid while the factory lives. Probing consumes bytes and nothing goes
    // back for them here: a decoder rewinds its stream when it starts.
    ImageDecoder* createImageDecoder(auto_ptr<Stream>& stream);

  private:
    std::vector<auto_ptr<ImageDecoder>> m_ImageDecoders;
};

#endif  // KORVANE_FRAMEWORKS_IMAGES_IMAGE_DECODER_FACTORY_H_
