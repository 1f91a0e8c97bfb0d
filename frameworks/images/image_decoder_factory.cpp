// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/image_decoder_factory.h"

#include "frameworks/core/guard.h"
#include "frameworks/images/jpeg_decoder.h"

ImageDecoderFactory::ImageDecoderFactory() {
    korvane::guarded([this] {
        const auto_ptr<ImageDecoder> jpeg(new JpegDecoder);
        m_ImageDecoders.push_back(jpeg);
    });
}

ImageDecoder* ImageDecoderFactory::createImageDecoder(auto_ptr<Stream>& stream) {
    if (stream.get() == nullptr) {
        return nullptr;
    }
    for (const auto_ptr<ImageDecoder>& decoder : m_ImageDecoders) {
        if (decoder->isSupported(stream)) {
            return decoder.get();
        }
    }
    return nullptr;
}
