// SPDX-License-Identifier: Apache-2.0
#include "frameworks/gpu/gpu_context.h"

GPUContext::GPUContext(ANativeWindow* window, uint32_t width, uint32_t height)
    : m_ANativeWindow(window), m_Width(static_cast<int32_t>(width)), m_Height(static_cast<int32_t>(height)) {}

GPUContext::~GPUContext() {
    m_ANativeWindow = nullptr;
    m_Width = 0;
    m_Height = 0;
}
