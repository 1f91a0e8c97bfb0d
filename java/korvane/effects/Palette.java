// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import android.graphics.Bitmap;

/**
 * The colors that stand for a picture best: for animated images of few colors, or to tint a screen.
 *
 * <p>May run on any thread. It takes 9 bytes of memory for each pixel while it runs: scale a photo down first where only
 * its main colors are wanted.
 */
public final class Palette {
    /** The most colors that can be asked for. */
    public static final int MAX_COLORS = 512;

    private Palette() {}

    /**
     * The palette of a bitmap. The alpha channel counts for nothing.
     *
     * @param bitmap not null, not recycled, of Bitmap.Config.ARGB_8888 without padding between rows
     * @param count how many colors, 1 to {@link #MAX_COLORS}
     * @return at most that many colors 0xFFRRGGBB; fewer when the picture has fewer shades. A color that no pixel is
     *     nearest to comes out as black.
     * @throws IllegalArgumentException for a bitmap or count that does not fit
     * @throws IllegalStateException when the bitmap is recycled or reconfigured during the call, or memory is short
     */
    public static int[] of(Bitmap bitmap, int count) {
        Checks.readable(bitmap);
        Checks.inRange(count, 1, MAX_COLORS, "count");
        return Natives.palette(bitmap, bitmap.getWidth(), bitmap.getHeight(), count);
    }
}
