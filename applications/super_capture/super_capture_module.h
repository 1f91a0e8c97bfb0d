// SPDX-License-Identifier: Apache-2.0
// Burst capture: merges the frames of a burst into one YUYV picture on a thread of its own. Entry points with plain C
// names; the handle is the engine's address as an integer, 0 is no engine.
//
// A dark burst (mean luma of the first frame taken at most 24) is merged to the brightest value seen at each byte, any
// other to the truncated mean. Frames are YUYV: width * height * 2 bytes (Y0 U Y1 V) in plane 0; the other planes carry
// nothing. Every call takes an array of four plane pointers.
//
// One thread at a time may use a handle. Frames that the worker has not taken when the result is popped are not merged,
// so leave it time: one frame at a time is the surest way. Each merge step logs.
#ifndef KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_MODULE_H_
#define KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_MODULE_H_

#include <stdint.h>

#include "frameworks/core/export.h"

#ifdef __cplusplus
extern "C" {
#endif

// Starts a burst. `format` is 1 (YUYV). The handle; 0 when a size is 0, for another format and when memory is short.
KORVANE_API intptr_t super_capture_module_init(uint32_t width, uint32_t height, uint32_t format);

// Copies the frame in planes[0] and queues it for merging. 0; -1 without a handle or any plane; -3 when planes[0] is
// null or memory is short.
KORVANE_API int32_t super_capture_module_push_frame(intptr_t handle, unsigned char** planes);

// Ends the burst, waits for the worker and copies the merged picture into planes[0], a buffer of the caller's of
// width * height * 2 bytes; without any frame it is left alone. 0; -1 without a handle or any plane. A second call
// gives the same picture; frames pushed after the first are never merged. When memory was short for merging, the
// picture is the last frame taken.
KORVANE_API int32_t super_capture_module_pop_frame(intptr_t handle, unsigned char** planes);

// Ends the burst if need be and deletes the engine. 0 is ignored.
KORVANE_API void super_capture_module_destroy(intptr_t handle);

#ifdef __cplusplus
}
#endif

#endif  // KORVANE_APPLICATIONS_SUPER_CAPTURE_SUPER_CAPTURE_MODULE_H_
