// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import android.graphics.Bitmap;

/**
 * The native methods of this package. They trust their callers: every handle is alive and used by one thread at a time,
 * every array and size has been checked. What still fails raises an IllegalStateException with the reason.
 */
final class Natives {
    static {
        System.loadLibrary("korvane");
    }

    private Natives() {}

    // The bitmap is ARGB_8888 of this size, rows packed; what has changed meanwhile is noticed. Weight 0 leaves out the
    // dimming.
    static native void blur(Bitmap bitmap, int width, int height, int radius, int color, int weight);

    static native int[] palette(Bitmap bitmap, int width, int height, int count);

    // True when a pixel has changed.
    static native boolean stamp(byte[] yuyv, int width, int height, String text);

    // Null, or why the directory cannot be used. A null directory brings the default back.
    static native String setProgramCacheDirectory(String directory);

    // One line a filter ("filter", name, summary) and under it one a parameter ("parameter", name, type, count, range,
    // default or nothing, summary), fields parted by tabs.
    static native String filterTable();

    static native long filterOpen(String name);

    static native void filterApply(long filter, Bitmap bitmap, int width, int height);

    static native void filterSet(long filter, String parameter, float[] values);

    static native void filterSetBitmap(long filter, String parameter, Bitmap bitmap, int width, int height);

    static native void filterClose(long filter);

    // The following use the context that is current on the calling thread.
    static native long surfaceFilterOpen(String name);

    static native void surfaceFilterDraw(
            long filter, int texture, int inputWidth, int inputHeight, int outputWidth, int outputHeight);

    static native void surfaceFilterSet(long filter, String parameter, float[] values);

    static native void surfaceFilterSetBitmap(long filter, String parameter, Bitmap bitmap, int width, int height);

    static native void surfaceFilterClose(long filter);

    static native int createCameraTexture();

    static native void deleteCameraTexture(int texture);

    static native long panoramaOpen(int width, int height, int format);

    // A result of PanoramaModule; answer: offset across, offset down, direction.
    static native int panoramaFeed(long panorama, byte[] frame, float gyroX, float gyroY, int[] answer);

    static native void panoramaClose(long panorama);

    static native long burstOpen(int width, int height);

    static native void burstPush(long burst, byte[] yuyv);

    // Waits for all frames pushed; false when none was merged.
    static native boolean burstMerge(long burst, int frames, byte[] yuyv);

    static native void burstClose(long burst);
}
