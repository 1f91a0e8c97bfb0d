// SPDX-License-Identifier: Apache-2.0
#include "applications/pano/panorama_interface.h"

result_t PanoramaInterface::startup(int width, int height, int format, PanoramaOnErrorCallback onErrorCb) {
    return m_PanoramaModule.startup(width, height, format, onErrorCb);
}

result_t PanoramaInterface::addFrame(unsigned char* pBuffer, float gyroX, float gyroY, int& offsetX, int& offsetY) {
    return m_PanoramaModule.pushFrame(pBuffer, gyroX, gyroY, offsetX, offsetY);
}

PanoramaDirectionType PanoramaInterface::getDirectionType() {
    return m_PanoramaModule.getDirectionType();
}

result_t PanoramaInterface::getResult(unsigned char* buffer) {
    return m_PanoramaModule.popFrame(buffer);
}

result_t PanoramaInterface::close() {
    return m_PanoramaModule.close();
}
