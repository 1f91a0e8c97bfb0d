// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_script.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
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

// A file beside the one of that path, which it may become. Removed where it does not.
class UnfinishedFile {
  public:
    explicit UnfinishedFile(const std::string& path) : m_Path(path), m_Name(path) {
        m_Name.resize(path.rfind('/') + 1);
        m_Name += ".korvane-XXXXXX";
        const int file = path.empty() ? -1 : mkstemp(m_Name.data());
        m_IsThere = file >= 0;
        if (m_IsThere) {
            close(file);
        }
    }
    ~UnfinishedFile() {
        if (m_IsThere) {
            unlink(m_Name.c_str());
        }
    }
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    // Null when it could not be made.
    const char* name() const { return m_IsThere ? m_Name.c_str() : nullptr; }

    void finish(size_t bytes) {
        struct stat status = {};
        if (m_IsThere && stat(m_Name.c_str(), &status) == 0 && static_cast<size_t>(status.st_size) == bytes) {
            m_IsThere = std::rename(m_Name.c_str(), m_Path.c_str()) != 0;
        }
    }

  private:
    const std::string m_Path;
    std::string m_Name;
    bool m_IsThere;
};

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
    int32_t format = 0;
    // What is taken over is also written back, so it must be what the file holds.
    if (reader.read(&format, kFormatBytes) < kFormatBytes || reader.read(m_ScriptBinary, size) < size) {
        galloc_free(m_ScriptBinary);
        m_ScriptBinary = nullptr;
        return;
    }
    m_ScriptBinaryFormat = static_cast<GLenum>(format);
    m_ScriptBinarySize = static_cast<int>(size);
}

// The streams do not tell whether all was stored, but the file's length does. A short file would be worse than none: a
// binary that the driver rejects is not compiled anew.
void GPUScript::write_cache() const {
    UnfinishedFile file(korvane::program_cache_file(m_ScriptName));
    const auto size = static_cast<size_t>(std::max(m_ScriptBinarySize, 0));
    StreamWriter writer(new FileStream(file.name(), FileStream::FILE_MODE_ONLY_WRITE));
    writer.writeInt(static_cast<int32_t>(m_ScriptBinaryFormat));
    writer.write(m_ScriptBinary, size);
    writer.flush();
    writer.close();
    file.finish(kFormatBytes + size);
}
