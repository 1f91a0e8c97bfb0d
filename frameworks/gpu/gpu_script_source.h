// SPDX-License-Identifier: Apache-2.0
// GPUScriptSource: one named shader text.
#ifndef KORVANE_FRAMEWORKS_GPU_GPU_SCRIPT_SOURCE_H_
#define KORVANE_FRAMEWORKS_GPU_GPU_SCRIPT_SOURCE_H_

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"

class KORVANE_API GPUScriptSource : public RefBase {
  public:
    // Adopts two buffers of the galloc family.
    GPUScriptSource(char* name, char* source);
    ~GPUScriptSource() override;

    GPUScriptSource(const GPUScriptSource&) = delete;
    GPUScriptSource& operator=(const GPUScriptSource&) = delete;

    // A new source, with count 0, of copies of both texts; null if either is null or empty or memory is short.
    static GPUScriptSource* createScriptSource(const char* name, const char* source);

    const char* getName() const { return m_ScriptSourceName; }
    const char* getSource() const { return m_ScriptSourceContext; }

  private:
    char* m_ScriptSourceName;
    char* m_ScriptSourceContext;
};

#endif  // KORVANE_FRAMEWORKS_GPU_GPU_SCRIPT_SOURCE_H_
