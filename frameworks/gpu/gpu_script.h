// SPDX-License-Identifier: Apache-2.0
// GPUScript: a named list of shader texts and, if given, the linked program in the driver's own binary format.
//
// The binary is kept in the program cache, one file a script, so that later runs need not compile. The file is
// <directory><name>.osb: 4 bytes with the driver's format code in the processor's byte order, then the binary up to the
// end of the file. The file does not name the driver; a driver rejects binaries that it does not know. See
// program_cache.h for the directory.
//
// Used on the thread where the context is current; files are not locked against other processes.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_SCRIPT_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_SCRIPT_H_

#include <GLES3/gl3.h>

#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"
#include "frameworks/gpu/gpu_context.h"
#include "frameworks/gpu/gpu_script_source.h"

class KORVANE_API GPUScript : public RefBase {
  public:
    // Takes the binary from the cache if there is one. A null name means no cache file. A file without room for a
    // format and a binary, or that ends early, counts as absent. When memory is short there is no binary, and perhaps
    // no cache file.
    GPUScript(GPUContext* context, const char* name);
    GPUScript(auto_ptr<GPUContext>& context, const char* name);

    // Does what clear() does; so a script that holds a binary writes its cache file again.
    ~GPUScript() override;

    GPUScript(const GPUScript&) = delete;
    GPUScript& operator=(const GPUScript&) = delete;

    // Appends a source: first the vertex shader, then the fragment shader. False for null or empty texts, for a null
    // source and when memory is short. The pointer forms take a reference; a new source that nobody holds is deleted
    // when it could not be appended.
    bool addSource(const char* name, const char* source);
    bool addSource(GPUScriptSource* source);
    bool addSource(auto_ptr<GPUScriptSource>& source);

    // An entry that holds null for an index outside the list.
    auto_ptr<GPUScriptSource>& getScriptSourceByIndex(int index);

    // Removes the first entry that holds `source`; those behind it move up.
    void remove(GPUScriptSource* source);
    void remove(auto_ptr<GPUScriptSource>& source);

    void setScriptBinaryFormat(GLenum format) { m_ScriptBinaryFormat = format; }
    GLenum getScriptBinaryFormat() const { return m_ScriptBinaryFormat; }

    // Adopts a buffer of the galloc family. An earlier one is not freed: the caller owns it again.
    void setScriptBinary(void* binary, int size);
    void* getScriptBinary() const { return m_ScriptBinary; }
    int getScirptBinarySize() const { return m_ScriptBinarySize; }

    // Writes the cache file if a binary is held, and empties the list of sources. The binary stays. Write errors and
    // short memory are dropped: then the cache file is what it was.
    void clear();

  private:
    KORVANE_HIDDEN void read_cache();
    KORVANE_HIDDEN void write_cache() const;

    auto_ptr<GPUContext> m_GPUContext;
    char* m_ScriptName = nullptr;
    std::vector<auto_ptr<GPUScriptSource>> m_Sources;
    auto_ptr<GPUScriptSource> m_EmptySource;
    GLenum m_ScriptBinaryFormat = 0;
    void* m_ScriptBinary = nullptr;
    int m_ScriptBinarySize = 0;
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_SCRIPT_H_
