// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/jpeg_utils.h"

#include "platform/log.h"

namespace {

// libjpeg's JERR_FILE_WRITE. Its list of messages is not among the headers that every installation has.
constexpr int kMessageFileWrite = 37;

// Android's own libjpeg counts the bytes that it has taken from the source and can be asked to seek; stock libjpeg has
// no such members, and then these functions do nothing.
template <typename Manager>
concept CountsItsBytes = requires(Manager manager) {
    manager.current_offset;
};

template <typename Manager>
void set_current_offset(Manager& manager, size_t offset) {
    if constexpr (CountsItsBytes<Manager>) {
        manager.current_offset = static_cast<decltype(manager.current_offset)>(offset);
    }
}

template <typename Manager>
void add_to_current_offset(Manager& manager, size_t count) {
    if constexpr (CountsItsBytes<Manager>) {
        manager.current_offset += static_cast<decltype(manager.current_offset)>(count);
    }
}

jpeg_utils_source_mgr* source_of(j_decompress_ptr cinfo) {
    return static_cast<jpeg_utils_source_mgr*>(cinfo->src);
}

jpeg_utils_destination_mgr* destination_of(j_compress_ptr cinfo) {
    return static_cast<jpeg_utils_destination_mgr*>(cinfo->dest);
}

void fail(j_decompress_ptr cinfo) {
    cinfo->err->error_exit(reinterpret_cast<j_common_ptr>(cinfo));
}

void fail_to_write(j_compress_ptr cinfo) {
    cinfo->err->msg_code = kMessageFileWrite;
    cinfo->err->error_exit(reinterpret_cast<j_common_ptr>(cinfo));
}

void empty_buffer(jpeg_utils_source_mgr* source) {
    source->next_input_byte = source->fBuffer;
    source->bytes_in_buffer = 0;
}

void source_init(j_decompress_ptr cinfo) {
    jpeg_utils_source_mgr* source = source_of(cinfo);
    empty_buffer(source);
    set_current_offset(*source, 0);
    if (!source->fStream->rewind()) {
        fail(cinfo);
    }
}

// At the end of the stream libjpeg is told to suspend, and no end marker is made up: a file that is cut short must fail
// and not come out with grey lines.
boolean source_fill_input_buffer(j_decompress_ptr cinfo) {
    jpeg_utils_source_mgr* source = source_of(cinfo);
    const size_t count = source->fStream->read(source->fBuffer, sizeof(source->fBuffer));
    // Some streams answer a failed read with the largest size_t.
    if (count == 0 || count > sizeof(source->fBuffer)) {
        return FALSE;
    }
    add_to_current_offset(*source, count);
    source->next_input_byte = source->fBuffer;
    source->bytes_in_buffer = count;
    return TRUE;
}

void source_skip_input_data(j_decompress_ptr cinfo, long count) {
    jpeg_utils_source_mgr* source = source_of(cinfo);
    if (count <= 0) {
        return;
    }
    const size_t wanted = static_cast<size_t>(count);
    if (source->bytes_in_buffer >= wanted) {
        source->next_input_byte += wanted;
        source->bytes_in_buffer -= wanted;
        return;
    }
    size_t remaining = wanted - source->bytes_in_buffer;
    while (remaining > 0) {
        const size_t skipped = source->fStream->skip(remaining);
        if (skipped < 1 || skipped > remaining) {
            fail(cinfo);
            return;
        }
        remaining -= skipped;
        add_to_current_offset(*source, skipped);
    }
    empty_buffer(source);
}

template <typename Manager>
boolean source_seek_input_data(j_decompress_ptr cinfo, long position) {
    auto* source = static_cast<Manager*>(cinfo->src);
    const auto target = static_cast<decltype(source->current_offset)>(position);
    if (source->current_offset >= target) {
        if (!source->fStream->rewind()) {
            fail(cinfo);
            return FALSE;
        }
        source->fStream->skip(static_cast<size_t>(target));
    } else {
        source->fStream->skip(static_cast<size_t>(target - source->current_offset));
    }
    source->current_offset = target;
    empty_buffer(source);
    return TRUE;
}

template <typename Manager>
void install_seek(Manager& manager) {
    if constexpr (requires { manager.seek_input_data; }) {
        manager.start_input_byte = nullptr;
        manager.seek_input_data = source_seek_input_data<Manager>;
    }
}

void source_term(j_decompress_ptr /*cinfo*/) {}

void destination_init(j_compress_ptr cinfo) {
    jpeg_utils_destination_mgr* destination = destination_of(cinfo);
    destination->next_output_byte = destination->fBuffer;
    destination->free_in_buffer = sizeof(destination->fBuffer);
}

boolean destination_empty_output_buffer(j_compress_ptr cinfo) {
    jpeg_utils_destination_mgr* destination = destination_of(cinfo);
    // Only a write of nothing is an error; whoever must know of a short one counts in the stream.
    if (destination->fStream->write(destination->fBuffer, sizeof(destination->fBuffer)) == 0) {
        fail_to_write(cinfo);
        return FALSE;
    }
    destination_init(cinfo);
    return TRUE;
}

void destination_term(j_compress_ptr cinfo) {
    jpeg_utils_destination_mgr* destination = destination_of(cinfo);
    const size_t count = sizeof(destination->fBuffer) - destination->free_in_buffer;
    if (count > 0 && destination->fStream->write(destination->fBuffer, count) == 0) {
        fail_to_write(cinfo);
        return;
    }
    destination->fStream->flush();
}

void ignore_message(j_common_ptr /*cinfo*/) {}

}  // namespace

jpeg_utils_source_mgr::jpeg_utils_source_mgr(Stream* stream) : jpeg_source_mgr(), fStream(stream) {
    init_source = source_init;
    fill_input_buffer = source_fill_input_buffer;
    skip_input_data = source_skip_input_data;
    resync_to_restart = jpeg_resync_to_restart;
    term_source = source_term;
    install_seek(*this);
}

jpeg_utils_destination_mgr::jpeg_utils_destination_mgr(Stream* stream) : jpeg_destination_mgr(), fStream(stream) {
    init_destination = destination_init;
    empty_output_buffer = destination_empty_output_buffer;
    term_destination = destination_term;
}

jpeg_error_mgr* jpeg_utils_init_error_mgr(jpeg_utils_error_mgr* error) {
    jpeg_std_error(error);
    error->error_exit = jpeg_utils_error_exit;
    error->output_message = ignore_message;
    return error;
}

void jpeg_utils_error_exit(j_common_ptr cinfo) {
    auto* error = static_cast<jpeg_utils_error_mgr*>(cinfo->err);
    char message[JMSG_LENGTH_MAX];
    error->format_message(cinfo, message);
    KORVANE_LOGD("jpeg_utils_error_exit,msgcode[%d]  msg: %s\n", error->msg_code, message);
    jpeg_destroy(cinfo);
    longjmp(error->fJmpBuf, -1);
}
