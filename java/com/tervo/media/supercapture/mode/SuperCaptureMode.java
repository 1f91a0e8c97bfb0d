// SPDX-License-Identifier: Apache-2.0
package com.tervo.media.supercapture.mode;

/**
 * Watches the preview's brightness and advises an aperture and a gain when it has changed. Subclasses override {@link
 * #onResultCallback}.
 *
 * <p>One thread at a time may use a handle.
 */
public class SuperCaptureMode {
    static {
        System.loadLibrary("korvane");
    }

    /**
     * Makes an advisor.
     *
     * @param width of the frames in pixels
     * @param height of the frames in pixels
     * @param format is kept and not used
     * @return a handle; 0 when memory is short
     */
    public native long nativeCreate(int width, int height, int format);

    /**
     * Looks at one frame.
     *
     * @param handle from {@link #nativeCreate}; 0 does nothing
     * @param data one frame, of which the first width * height bytes, its luma, are read; a shorter one is ignored
     */
    public native void nativeProcess(long handle, byte[] data);

    /**
     * Deletes the advisor.
     *
     * @param handle from {@link #nativeCreate}; dead afterwards. 0 does nothing
     */
    public native void nativeDestroy(long handle);

    /**
     * Called by native code from within {@link #nativeProcess}, by this name.
     *
     * @param aperture an f-number
     * @param gain a step from -2 to 2
     */
    protected void onResultCallback(float aperture, int gain) {}
}
