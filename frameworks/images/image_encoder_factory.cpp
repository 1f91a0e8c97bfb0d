// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/image_encoder_factory.h"

#include <new>

#include "frameworks/images/jpeg_encoder.h"

ImageEncoder* ImageEncoderFactory::createImageEncoder(ImageEncoder::Type type) {
    return type == ImageEncoder::IMAGE_ENCODER_TYPE_JPEG ? new (std::nothrow) JpegEncoder : nullptr;
}
