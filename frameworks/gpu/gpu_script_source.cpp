// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_script_source.h"

#include <cstring>
#include <new>

#include "frameworks/core/galloc_ptr.h"

namespace {

// Some drivers read past the end of a shader text. So many bytes behind it are zero.
constexpr size_t kSlackBytes = 100;

korvane::galloc_ptr<char> copy_text(const char* text) {
    const size_t length = std::strlen(text);
    if (length == 0) {
        return nullptr;
    }
    korvane::galloc_ptr<char> copy(static_cast<char*>(galloc_alloc(length + kSlackBytes)));
    galloc_memcpy(copy.get(), text, length);
    return copy;
}

}  // namespace

GPUScriptSource::GPUScriptSource(char* name, char* source) : m_ScriptSourceName(name), m_ScriptSourceContext(source) {}

GPUScriptSource::~GPUScriptSource() {
    galloc_free(m_ScriptSourceName);
    galloc_free(m_ScriptSourceContext);
}

GPUScriptSource* GPUScriptSource::createScriptSource(const char* name, const char* source) {
    if (name == nullptr || source == nullptr) {
        return nullptr;
    }
    auto nameCopy = copy_text(name);
    auto sourceCopy = copy_text(source);
    if (nameCopy == nullptr || sourceCopy == nullptr) {
        return nullptr;
    }
    auto* created = new (std::nothrow) GPUScriptSource(nameCopy.get(), sourceCopy.get());
    if (created != nullptr) {
        static_cast<void>(nameCopy.release());
        static_cast<void>(sourceCopy.release());
    }
    return created;
}
