// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import com.tervo.media.supercapture.mode.SuperCaptureMode;

/**
 * Watches the preview's brightness and advises an aperture and a gain when it has changed.
 *
 * <p>Any thread may feed frames, one after the other; the listener is called on the thread that feeds. In the dark (a
 * mean brightness of 10 or less out of 255) there is no advice until it has once been brighter: begin with aperture 2.0
 * and gain 2. An advisor takes a few kilobytes of memory.
 */
public final class ExposureAdvisor implements AutoCloseable {
    /** Receives the advice. */
    public interface Listener {
        /**
         * The brightness has changed. An exception thrown here comes out of {@link ExposureAdvisor#feed}.
         *
         * @param aperture an f-number, 2.0 to 22.0
         * @param gain a step from -2 to 2
         */
        void onAdvice(float aperture, int gain);
    }

    private final Mode mode;
    private final int lumaBytes;
    private final Handle handle;

    /**
     * Opens an advisor.
     *
     * @param width of the frames in pixels, at least 1
     * @param height of the frames in pixels, at least 1
     * @param listener is told of every change; not null
     * @throws IllegalArgumentException for an argument that does not fit
     * @throws IllegalStateException when memory is short
     */
    public ExposureAdvisor(int width, int height, Listener listener) {
        lumaBytes = Checks.frameBytes(width, height, 2);
        mode = new Mode(Checks.notNull(listener, "listener"));
        long address = mode.nativeCreate(width, height, 0);
        if (address == 0) {
            throw new IllegalStateException("memory is short");
        }
        // Not through `mode`: its listener may hold this advisor, which would then never be found forgotten.
        handle = new Handle(this, "ExposureAdvisor", address, new SuperCaptureMode()::nativeDestroy);
    }

    /**
     * Looks at one frame.
     *
     * @param frame begins with width * height bytes of luma, as NV21, NV12 and YV12 frames do
     * @throws IllegalArgumentException for a frame that is null or too short
     * @throws IllegalStateException when the advisor is closed
     */
    public void feed(byte[] frame) {
        Checks.frame(frame, lumaBytes);
        long address = handle.enter();
        try {
            mode.nativeProcess(address, frame);
        } finally {
            handle.exit();
        }
    }

    /** Frees the advisor. Called from within the listener it takes effect when that returns. Closing twice is allowed. */
    @Override
    public void close() {
        handle.close();
    }

    private static final class Mode extends SuperCaptureMode {
        private final Listener listener;

        Mode(Listener listener) {
            this.listener = listener;
        }

        @Override
        protected void onResultCallback(float aperture, int gain) {
            listener.onAdvice(aperture, gain);
        }
    }
}
