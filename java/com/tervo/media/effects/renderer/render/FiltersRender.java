package com.tervo.media.effects.renderer.render;

import android.graphics.Bitmap;

/**
 * GPU filters by name. A handle is a native filter: 0 is none, and every call with it does nothing.
 *
 * <p>On screen: {@link #nativeOnSurfaceCreated} on the GL thread, then textures or bitmaps, parameters and
 * {@link #nativeOnDrawFrame}. Off screen: {@link #nativeCreate}, parameters and {@link #nativeProcess}. Both end with
 * {@link #nativeOnSurfaceDestroyed}, on the thread that made the filter.
 */
public class FiltersRender {
    static {
        System.loadLibrary("korvane");
    }

    /** A filter with an off-screen context of its own, current on this thread; 0 when it cannot be made. */
    public native long nativeCreate(String name);

    /** A filter on this thread's context. Target 0 takes camera textures as input, anything else 2D textures. */
    public native long nativeOnSurfaceCreated(String name, int target);

    public native void nativeSetTexture(
            long handle, int textureID, int inputWidth, int inputHeight, int outputWidth, int outputHeight);

    /** Width and height are trusted: the bitmap has at least so many RGBA pixels, rows packed. */
    public native void nativeSetBitmap(long handle, Bitmap bitmap, int width, int height);

    public native void nativeOnDrawFrame(long handle);

    /** Filters an RGBA bitmap in place. */
    public native void nativeProcess(long handle, Bitmap bitmap);

    /** Deletes the filter; the handle is dead afterwards. */
    public native void nativeOnSurfaceDestroyed(long handle);

    /** Which setter fits: 0 for an unknown name, 1 boolean to 10 bitmap, -1 for handle 0. */
    public native int nativeGetParameterType(long handle, String parametersKey);

    public native void nativeSetParametersBoolean(long handle, String parametersKey, boolean value);

    /** Arrays: one that is null, or shorter than the parameter, sets nothing. */
    public native void nativeSetParametersBooleanArray(long handle, String parametersKey, boolean[] value);

    public native void nativeSetParametersInteger(long handle, String parametersKey, int value);

    public native void nativeSetParametersIntegerArray(long handle, String parametersKey, int[] value);

    public native void nativeSetParametersFloat(long handle, String parametersKey, float value);

    public native void nativeSetParametersFloatArray(long handle, String parametersKey, float[] value);

    public native void nativeSetParametersDouble(long handle, String parametersKey, double value);

    public native void nativeSetParametersDoubleArray(long handle, String parametersKey, double[] value);

    /** The value is a native address that the filter reads; 0 is ignored. */
    public native void nativeSetParametersLong(long handle, String parametersKey, long value);

    public native void nativeSetParametersBitmap(long handle, String parametersKey, Bitmap bitmap);
}
