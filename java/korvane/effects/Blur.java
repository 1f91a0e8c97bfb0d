// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import android.graphics.Bitmap;

/**
 * Blurs bitmaps in place, and dims them towards a color: the frosted background behind dialogs.
 *
 * <p>The calls take no memory and may run on any thread, several at a time on different bitmaps. A photo of 12
 * megapixels takes long enough to be kept off the main thread.
 *
 * <p>Bitmaps must not be null, must be mutable, not recycled, and of Bitmap.Config.ARGB_8888 without padding between
 * rows, as Bitmap.createBitmap and Bitmap.copy make them.
 */
public final class Blur {
    /** The largest radius. */
    public static final int MAX_RADIUS = 254;

    private static final int FULL_WEIGHT = 256;

    private Blur() {}

    /**
     * Blurs a bitmap. The alpha channel stays as it is.
     *
     * @param bitmap what to blur, in place
     * @param radius in pixels, 0 (no change) to {@link #MAX_RADIUS}
     * @throws IllegalArgumentException for a bitmap or radius that does not fit
     * @throws IllegalStateException when the bitmap is recycled or reconfigured during the call
     */
    public static void apply(Bitmap bitmap, int radius) {
        run(bitmap, radius, 0, 0);
    }

    /**
     * Blurs a bitmap and dims it towards a color. The alpha channel stays as it is.
     *
     * @param bitmap what to change, in place
     * @param radius of the blur in pixels, 0 (no blur) to {@link #MAX_RADIUS}
     * @param color 0xAARRGGBB; its alpha is not used
     * @param amount how much of the color shows: 0 (none) to 1 (the color alone)
     * @throws IllegalArgumentException for a bitmap or number that does not fit
     * @throws IllegalStateException when the bitmap is recycled or reconfigured during the call
     */
    public static void dim(Bitmap bitmap, int radius, int color, float amount) {
        Checks.inRange(amount, 0, 1, "amount");
        run(bitmap, radius, color, Math.round(amount * FULL_WEIGHT));
    }

    private static void run(Bitmap bitmap, int radius, int color, int weight) {
        Checks.writable(bitmap);
        Checks.inRange(radius, 0, MAX_RADIUS, "radius");
        Natives.blur(bitmap, bitmap.getWidth(), bitmap.getHeight(), radius, color, weight);
    }
}
