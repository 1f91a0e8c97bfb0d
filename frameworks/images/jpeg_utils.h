// SPDX-License-Identifier: Apache-2.0
// libjpeg's source, destination and error managers over a Stream. This header needs libjpeg's own (API version 62).
//
// Each structure extends libjpeg's own as its first part, so that the callbacks can cast one to the other. They live on
// the stack of one encode or decode call and own nothing. libjpeg reports a fatal error by a call that must not return:
// jpeg_utils_error_exit logs, destroys the libjpeg object and jumps to `fJmpBuf`. So nothing with a destructor may be
// alive in the frames between setjmp and the call into libjpeg.
#ifndef KORVANE_FRAMEWORKS_IMAGES_JPEG_UTILS_H_
#define KORVANE_FRAMEWORKS_IMAGES_JPEG_UTILS_H_

#include <csetjmp>
#include <cstdio>  // IWYU pragma: keep

// libjpeg's header needs size_t and FILE before it.
#include <jpeglib.h>

#include "frameworks/core/export.h"
#include "frameworks/io/stream.h"

struct KORVANE_API jpeg_utils_source_mgr : jpeg_source_mgr {
    explicit jpeg_utils_source_mgr(Stream* stream);

    Stream* fStream;
    unsigned char fBuffer[4096];
};

struct KORVANE_API jpeg_utils_destination_mgr : jpeg_destination_mgr {
    explicit jpeg_utils_destination_mgr(Stream* stream);

    Stream* fStream;
    unsigned char fBuffer[1024];
};

struct jpeg_utils_error_mgr : jpeg_error_mgr {
    jmp_buf fJmpBuf;
};

// libjpeg's standard error manager with the fatal error replaced by jpeg_utils_error_exit. Warnings go nowhere: a
// library does not write to its client's standard error. The caller calls setjmp on fJmpBuf before it uses the object.
KORVANE_API jpeg_error_mgr* jpeg_utils_init_error_mgr(jpeg_utils_error_mgr* error);

// Logs the message, destroys the compressor or decompressor and jumps to fJmpBuf with -1. Does not return.
[[noreturn]] KORVANE_API void jpeg_utils_error_exit(j_common_ptr cinfo);

#endif  // KORVANE_FRAMEWORKS_IMAGES_JPEG_UTILS_H_
