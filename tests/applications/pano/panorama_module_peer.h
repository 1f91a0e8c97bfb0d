// SPDX-License-Identifier: Apache-2.0
// Reaches into a panorama sweep for what a test needs to end it for certain and to see what came out.
#ifndef KORVANE_TESTS_APPLICATIONS_PANO_PANORAMA_MODULE_PEER_H_
#define KORVANE_TESTS_APPLICATIONS_PANO_PANORAMA_MODULE_PEER_H_

#include <functional>
#include <thread>

#include "applications/pano/panorama_interface.h"

class PanoramaModulePeer {
  public:
    static PanoramaModule& moduleOf(PanoramaInterface& panorama) { return panorama.m_PanoramaModule; }

    // Queues a frame with `push` and ends the sweep with `close`, with the worker held back in between, so that the
    // worker cannot drain the queue before it has to stop: close() would never return.
    static void closeWithAFrameQueued(PanoramaModule& module, const std::function<void()>& push,
                                      const std::function<void()>& close) {
        module.m_MutexInput.lock();
        push();
        std::thread closer(close);
        while (module.m_IsRunning) {
            std::this_thread::yield();
        }
        module.m_MutexInput.unlock();
        closer.join();
    }

    static PanoramaFrame* outputFrame(PanoramaModule& module) { return module.m_OutputFrame.get(); }
};

#endif  // KORVANE_TESTS_APPLICATIONS_PANO_PANORAMA_MODULE_PEER_H_
