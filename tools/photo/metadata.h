// SPDX-License-Identifier: Apache-2.0
// Edits of the metadata blocks that a photo carries.
//
// EXIF blocks are changed in place and never rewritten: makers' notes hold offsets that break when they move.
#ifndef KORVANE_TOOLS_PHOTO_METADATA_H_
#define KORVANE_TOOLS_PHOTO_METADATA_H_

#include "tools/photo/photo.h"

namespace korvane {

// 1 to 8; 1 when the block has none or cannot be read.
int exif_orientation(const Bytes& exif);

// For the output's pixels: sets the orientation to 1 and the pixel dimensions to these, and drops the thumbnail.
void update_exif(Bytes& exif, uint32_t width, uint32_t height);

// Sets the orientation to 1 and drops thumbnails.
void update_xmp(Bytes& xmp);

// Drops thumbnails.
void update_photoshop(Bytes& resources);

enum class IccSpace { kNone, kRgb, kGray, kCmyk, kOther };

IccSpace icc_space(const Bytes& profile);

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_METADATA_H_
