// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/image_encoder.h"

bool ImageEncoder::encode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality) {
    if (stream.get() == nullptr || image.get() == nullptr) {
        return false;
    }
    return onEncode(stream, image, quality);
}
