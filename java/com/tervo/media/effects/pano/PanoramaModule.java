// SPDX-License-Identifier: Apache-2.0
package com.tervo.media.effects.pano;

/**
 * Takes the preview frames of a panorama sweep with the gyroscope's angles, refuses frames that move against the sweep,
 * and says how far the guide on the screen has to move.
 *
 * <p>One thread at a time may use a handle.
 */
public class PanoramaModule {
    static {
        System.loadLibrary("korvane");
    }

    /** Pixels across from the guide's place, written by native code with every frame that is taken. */
    public int mOffsetX;

    /** Pixels down from the guide's place, written by native code with every frame that is taken. */
    public int mOffsetY;

    /**
     * Begins a sweep.
     *
     * @param width of the frames in pixels
     * @param height of the frames in pixels
     * @param format of the frames: 1 NV12, 2 NV21, 3 YV12
     * @return a handle, or 0 for a size below 1 or another format
     */
    public native long nativeCreate(int width, int height, int format);

    /**
     * Takes one frame.
     *
     * @param handle from {@link #nativeCreate}; 0 does nothing
     * @param data one frame, width * height * 3 / 2 bytes
     * @param gyroX angle in degrees
     * @param gyroY angle in degrees
     * @return 0 taken, 1 out of memory, 2 wrong direction, 3 no (or short) data, or the reference frame, which is not
     *     taken, 4 not running
     */
    public native int nativeProcess(long handle, byte[] data, float gyroX, float gyroY);

    /**
     * Stops the worker and frees everything. The worker ends only after one more frame: when it has taken all frames
     * already, this call never returns. korvane.effects.Panorama has an end that does.
     *
     * @param handle from {@link #nativeCreate}; dead afterwards. 0 does nothing
     */
    public native void nativeDestroy(long handle);
}
