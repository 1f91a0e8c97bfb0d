#include "frameworks/gpu/gpu_script_source.h"

#include <cstring>

#include "frameworks/core/memory.h"

namespace {

// Some drivers read past the end of a shader text. So many bytes behind it are zero.
constexpr size_t kSlackBytes = 100;

char* copy_text(const char* text) {
    const size_t length = std::strlen(text);
    if (length == 0) {
        return nullptr;
    }
    auto* copy = static_cast<char*>(galloc_alloc(length + kSlackBytes));
    galloc_memcpy(copy, text, length);
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
    char* nameCopy = copy_text(name);
    char* sourceCopy = copy_text(source);
    if (nameCopy != nullptr && sourceCopy != nullptr) {
        return new GPUScriptSource(nameCopy, sourceCopy);
    }
    galloc_free(nameCopy);
    galloc_free(sourceCopy);
    return nullptr;
}
