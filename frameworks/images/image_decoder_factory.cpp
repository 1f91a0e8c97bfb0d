#include "frameworks/images/image_decoder_factory.h"

#include <new>

#include "frameworks/images/jpeg_decoder.h"

ImageDecoderFactory::ImageDecoderFactory() {
    try {
        m_ImageDecoders.emplace_back(new JpegDecoder);
    } catch (const std::bad_alloc&) {
        // A factory without decoders knows no stream.
    }
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
