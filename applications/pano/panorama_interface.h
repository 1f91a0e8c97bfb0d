// SPDX-License-Identifier: Apache-2.0
// PanoramaInterface: what the Java binding holds. It has one panorama module as a member, and the operations that Java
// needs.
#ifndef KORVANE_APPLICATIONS_PANO_PANORAMA_INTERFACE_H_
#define KORVANE_APPLICATIONS_PANO_PANORAMA_INTERFACE_H_

#include "applications/pano/panorama_module.h"
#include "frameworks/core/ref_base.h"

// Each operation calls the module's of the same name; addFrame calls pushFrame, getResult calls popFrame.
class PanoramaInterface : public RefBase {
  public:
    virtual result_t startup(int width, int height, int format, PanoramaOnErrorCallback onErrorCb);
    virtual result_t addFrame(unsigned char* pBuffer, float gyroX, float gyroY, int& offsetX, int& offsetY);
    virtual PanoramaDirectionType getDirectionType();
    virtual result_t getResult(unsigned char* buffer);
    virtual result_t close();

    size_t bytesToRead() const { return m_PanoramaModule.bytesToRead(); }

  private:
    friend class PanoramaModulePeer;

    PanoramaModule m_PanoramaModule;
};

#endif  // KORVANE_APPLICATIONS_PANO_PANORAMA_INTERFACE_H_
