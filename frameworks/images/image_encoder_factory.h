// SPDX-License-Identifier: Apache-2.0
// ImageEncoderFactory: makes an encoder for a file format.
#ifndef KORVANE_FRAMEWORKS_IMAGES_IMAGE_ENCODER_FACTORY_H_
#define KORVANE_FRAMEWORKS_IMAGES_IMAGE_ENCODER_FACTORY_H_

#include "frameworks/images/image_encoder.h"

class KORVANE_API ImageEncoderFactory : public RefBase {
  public:
    // A new encoder that the caller adopts; null for a type that has none, and when memory is short.
    ImageEncoder* createImageEncoder(ImageEncoder::Type type);
};

#endif  // KORVANE_FRAMEWORKS_IMAGES_IMAGE_ENCODER_FACTORY_H_
