// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_script.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "frameworks/core/guard.h"
#include "frameworks/core/memory.h"
#include "frameworks/gpu/program_cache.h"
#include "frameworks/io/file_stream.h"
#include "frameworks/io/stream_reader.h"
#include "frameworks/io/stream_writer.h"

namespace {

constexpr size_t kFormatBytes = sizeof(int32_t);

}  // namespace

GPUScript::GPUScript(GPUContext* context, const char* name) : m_GPUContext(context) {
    if (name == nullptr) {
        return;
    }
    const size_t length = std::strlen(name);
    m_ScriptName = static_cast<char*>(galloc_alloc(length + 1));
    if (m_ScriptName == nullptr) {
        return;
    }
    galloc_memcpy(m_ScriptName, name, length);
    korvane::guarded([this] { read_cache(); });
}

GPUScript::GPUScript(auto_ptr<GPUContext>& context, const char* name) : GPUScript(context.get(), name) {}

GPUScript::~GPUScript() {
    clear();
    galloc_free(m_ScriptName);
    galloc_free(m_ScriptBinary);
}

bool GPUScript::addSource(const char* name, const char* source) {
    return addSource(GPUScriptSource::createScriptSource(name, source));
}

bool GPUScript::addSource(GPUScriptSource* source) {
    auto_ptr<GPUScriptSource> held(source);
    return addSource(held);
}

bool GPUScript::addSource(auto_ptr<GPUScriptSource>& source) {
    return source.get() != nullptr && korvane::guarded(false, [&] {
               m_Sources.push_back(source);
               return true;
           });
}

auto_ptr<GPUScriptSource>& GPUScript::getScriptSourceByIndex(int index) {
    if (index < 0 || static_cast<size_t>(index) >= m_Sources.size()) {
        return m_EmptySource;
    }
    return m_Sources[static_cast<size_t>(index)];
}

void GPUScript::remove(GPUScriptSource* source) {
    const auto holds = [source](const auto_ptr<GPUScriptSource>& entry) { return entry == source; };
    const auto found = std::find_if(m_Sources.begin(), m_Sources.end(), holds);
    if (found != m_Sources.end()) {
        m_Sources.erase(found);
    }
}

void GPUScript::remove(auto_ptr<GPUScriptSource>& source) {
    remove(source.get());
}

void GPUScript::setScriptBinary(void* binary, int size) {
    m_ScriptBinary = binary;
    m_ScriptBinarySize = size;
}

void GPUScript::clear() {
    if (m_ScriptName != nullptr && m_ScriptBinary != nullptr) {
        korvane::guarded([this] { write_cache(); });
    }
    m_Sources.clear();
}

void GPUScript::read_cache() {
    StreamReader reader(
        new FileStream(korvane::program_cache_file(m_ScriptName).c_str(), FileStream::FILE_MODE_ONLY_READ));
    const size_t length = reader.getLength();
    if (length <= kFormatBytes || length - kFormatBytes > std::numeric_limits<int>::max()) {
        return;
    }
    const size_t size = length - kFormatBytes;
    m_ScriptBinary = galloc_malloc(size);
    if (m_ScriptBinary == nullptr) {
        return;
    }
    m_ScriptBinaryFormat = static_cast<GLenum>(reader.readInt());
    m_ScriptBinarySize = static_cast<int>(size);
    if (reader.read(m_ScriptBinary, size) < size) {
        m_ScriptBinaryFormat = 0;
        m_ScriptBinarySize = 0;
        galloc_free(m_ScriptBinary);
        m_ScriptBinary = nullptr;
    }
}

void GPUScript::write_cache() const {
    StreamWriter writer(
        new FileStream(korvane::program_cache_file(m_ScriptName).c_str(), FileStream::FILE_MODE_ONLY_WRITE));
    writer.writeInt(static_cast<int32_t>(m_ScriptBinaryFormat));
    writer.write(m_ScriptBinary, static_cast<size_t>(std::max(m_ScriptBinarySize, 0)));
    writer.flush();
    writer.close();
}
