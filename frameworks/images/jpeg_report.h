// SPDX-License-Identifier: Apache-2.0
// Decoding with a report: JpegDecoder for callers who must know what was wrong with a file.
#ifndef KORVANE_FRAMEWORKS_IMAGES_JPEG_REPORT_H_
#define KORVANE_FRAMEWORKS_IMAGES_JPEG_REPORT_H_

#include "frameworks/images/image.h"
#include "frameworks/images/jpeg_utils.h"
#include "frameworks/io/stream.h"

namespace korvane {

struct JpegReport {
    // libjpeg's longest message and its zero byte.
    static constexpr int kMaxTextBytes = 200;

    // libjpeg's fatal error; empty when there was none.
    char error[kMaxTextBytes] = {};
    // The first damage that libjpeg stepped over; empty when there was none.
    char warning[kMaxTextBytes] = {};
    // The stream ended before the picture (decoding failed) or before its end marker.
    bool endsEarly = false;
};

struct JpegReportingErrors : jpeg_utils_error_mgr {
    JpegReport* report;
};

// jpeg_utils_init_error_mgr, with the messages kept in `report`.
jpeg_error_mgr* init_jpeg_reporting_errors(JpegReportingErrors* errors, JpegReport* report);

// What JpegDecoder::onDecode does. It also logs the same.
bool decode_jpeg(Stream& stream, Image& image, JpegReport& report);

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_IMAGES_JPEG_REPORT_H_
