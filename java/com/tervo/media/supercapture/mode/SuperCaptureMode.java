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
     * @param format is kept and not used
     * @return a handle
     */
    public native long nativeCreate(int width, int height, int format);

    /** @param data one frame, of which the first width * height bytes, its luma, are read; a shorter one is ignored */
    public native void nativeProcess(long handle, byte[] data);

    public native void nativeDestroy(long handle);

    /**
     * Called by native code from within {@link #nativeProcess}, by this name.
     *
     * @param aperture an f-number
     * @param gain a step from -2 to 2
     */
    protected void onResultCallback(float aperture, int gain) {}
}
