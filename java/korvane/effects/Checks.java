// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import android.graphics.Bitmap;

/** What every argument of this package has to pass. */
final class Checks {
    private Checks() {}

    static <T> T notNull(T value, String name) {
        if (value == null) {
            throw new IllegalArgumentException(name + " is null");
        }
        return value;
    }

    static int inRange(int value, int lowest, int highest, String name) {
        if (value < lowest || value > highest) {
            throw new IllegalArgumentException(
                    name + " is " + value + "; it must be from " + lowest + " to " + highest);
        }
        return value;
    }

    // Also refuses what is not a number.
    static float inRange(float value, float lowest, float highest, String name) {
        if (!(value >= lowest && value <= highest)) {
            throw new IllegalArgumentException(
                    name + " is " + value + "; it must be from " + lowest + " to " + highest);
        }
        return value;
    }

    static float finite(float value, String name) {
        if (Float.isNaN(value) || Float.isInfinite(value)) {
            throw new IllegalArgumentException(name + " is " + value + "; it must be a finite number");
        }
        return value;
    }

    /** Bytes of a frame; a frame is one Java array, so its size is an int. */
    static int frameBytes(int width, int height, int bytesForTwoPixels) {
        inRange(width, 1, Integer.MAX_VALUE, "width");
        inRange(height, 1, Integer.MAX_VALUE, "height");
        // At most (2^31)^2 / 2 * 4: it fits in a long.
        long halfPixels = (long) width * height;
        long bytes = halfPixels / 2 * bytesForTwoPixels + halfPixels % 2 * (bytesForTwoPixels / 2);
        if (bytes > Integer.MAX_VALUE - 64) {
            throw new IllegalArgumentException("frames of " + width + " x " + height + " pixels are too large");
        }
        return (int) bytes;
    }

    static byte[] frame(byte[] frame, int bytes) {
        notNull(frame, "frame");
        if (frame.length < bytes) {
            throw new IllegalArgumentException("frame has " + frame.length + " bytes; it must have " + bytes);
        }
        return frame;
    }

    static Bitmap readable(Bitmap bitmap) {
        notNull(bitmap, "bitmap");
        if (bitmap.isRecycled()) {
            throw new IllegalArgumentException("bitmap is recycled");
        }
        if (bitmap.getConfig() != Bitmap.Config.ARGB_8888) {
            throw new IllegalArgumentException("bitmap is " + bitmap.getConfig()
                    + "; it must be ARGB_8888: pass bitmap.copy(Bitmap.Config.ARGB_8888, true)");
        }
        if (bitmap.getRowBytes() != bitmap.getWidth() * 4L) {
            throw new IllegalArgumentException("bitmap has padding: rows of " + bitmap.getRowBytes() + " bytes for "
                    + bitmap.getWidth() + " pixels; draw it into a bitmap made by Bitmap.createBitmap");
        }
        return bitmap;
    }

    static Bitmap writable(Bitmap bitmap) {
        readable(bitmap);
        if (!bitmap.isMutable()) {
            throw new IllegalArgumentException(
                    "bitmap is immutable: pass bitmap.copy(Bitmap.Config.ARGB_8888, true)");
        }
        return bitmap;
    }
}
