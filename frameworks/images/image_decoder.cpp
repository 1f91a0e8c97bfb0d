// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/image_decoder.h"

bool ImageDecoder::decode(auto_ptr<Stream>& stream, auto_ptr<Image>& image) {
    if (stream.get() == nullptr || image.get() == nullptr) {
        return false;
    }
    return onDecode(stream, image);
}
