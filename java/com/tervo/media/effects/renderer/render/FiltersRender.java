// SPDX-License-Identifier: Apache-2.0
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

    /**
     * A filter with an off-screen context of its own, which is current on this thread afterwards.
     *
     * @param name of the filter
     * @return a handle; 0 when the filter cannot be made
     */
    public native long nativeCreate(String name);

    /**
     * A filter on this thread's context.
     *
     * @param name of the filter
     * @param target 0 takes camera textures as input, anything else 2D textures
     * @return a handle; 0 when the filter cannot be made
     */
    public native long nativeOnSurfaceCreated(String name, int target);

    /**
     * Takes a texture as input. A later call changes the sizes only.
     *
     * @param handle the filter
     * @param textureID the texture's name; it stays the caller's
     * @param inputWidth in pixels
     * @param inputHeight in pixels
     * @param outputWidth in pixels
     * @param outputHeight in pixels
     */
    public native void nativeSetTexture(
            long handle, int textureID, int inputWidth, int inputHeight, int outputWidth, int outputHeight);

    /**
     * Takes a bitmap as input. Width and height are trusted.
     *
     * @param handle the filter
     * @param bitmap at least width * height RGBA pixels, rows packed
     * @param width in pixels
     * @param height in pixels
     */
    public native void nativeSetBitmap(long handle, Bitmap bitmap, int width, int height);

    /**
     * Draws the input to the surface.
     *
     * @param handle the filter
     */
    public native void nativeOnDrawFrame(long handle);

    /**
     * Filters a bitmap in place.
     *
     * @param handle a filter from {@link #nativeCreate}
     * @param bitmap RGBA, rows packed
     */
    public native void nativeProcess(long handle, Bitmap bitmap);

    /**
     * Deletes the filter.
     *
     * @param handle the filter; dead afterwards
     */
    public native void nativeOnSurfaceDestroyed(long handle);

    /**
     * Which setter fits a name.
     *
     * @param handle the filter
     * @param parametersKey the name
     * @return 1 boolean, 2 its array, 3 integer, 4 its array, 5 float, 6 its array, 7 double, 8 its array, 9 long, 10
     *     bitmap; 0 for an unknown name, -1 for handle 0
     */
    public native int nativeGetParameterType(long handle, String parametersKey);

    /**
     * Sets a parameter that is a boolean.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param value what to set
     */
    public native void nativeSetParametersBoolean(long handle, String parametersKey, boolean value);

    /**
     * Sets a parameter of several booleans.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param value what to set; an array that is null, or shorter than the parameter, sets nothing
     */
    public native void nativeSetParametersBooleanArray(long handle, String parametersKey, boolean[] value);

    /**
     * Sets a parameter that is an integer.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param value what to set
     */
    public native void nativeSetParametersInteger(long handle, String parametersKey, int value);

    /**
     * Sets a parameter of several integers.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param value what to set; an array that is null, or shorter than the parameter, sets nothing
     */
    public native void nativeSetParametersIntegerArray(long handle, String parametersKey, int[] value);

    /**
     * Sets a parameter that is a float.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param value what to set
     */
    public native void nativeSetParametersFloat(long handle, String parametersKey, float value);

    /**
     * Sets a parameter of several floats.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param value what to set; an array that is null, or shorter than the parameter, sets nothing
     */
    public native void nativeSetParametersFloatArray(long handle, String parametersKey, float[] value);

    /**
     * Sets a parameter that is a double.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param value what to set
     */
    public native void nativeSetParametersDouble(long handle, String parametersKey, double value);

    /**
     * Sets a parameter of several doubles.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param value what to set; an array that is null, or shorter than the parameter, sets nothing
     */
    public native void nativeSetParametersDoubleArray(long handle, String parametersKey, double[] value);

    /**
     * Sets a parameter by a native address.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param value a native address that the filter reads; 0 is ignored
     */
    public native void nativeSetParametersLong(long handle, String parametersKey, long value);

    /**
     * Sets a parameter that is a bitmap.
     *
     * @param handle the filter
     * @param parametersKey its name
     * @param bitmap what to set
     */
    public native void nativeSetParametersBitmap(long handle, String parametersKey, Bitmap bitmap);
}
