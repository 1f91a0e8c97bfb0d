// SPDX-License-Identifier: Apache-2.0
package android.graphics;

import java.nio.Buffer;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;

/**
 * The desktop's stand-in for Android's bitmap: RGBA pixels in a direct buffer, rows packed unless a test asks for
 * padding. Only what the library's callers and tests use; pixels of other configurations than ARGB_8888 are not held.
 * The native side reads the fields by name.
 */
public final class Bitmap {
    /** How Android stores pixels. */
    public enum Config {
        ALPHA_8,
        RGB_565,
        ARGB_4444,
        ARGB_8888,
        RGBA_F16,
        HARDWARE
    }

    private ByteBuffer mPixels;
    private final int mWidth;
    private final int mHeight;
    private final int mRowBytes;
    private final Config mConfig;
    private final boolean mIsMutable;
    private int mLockCount;

    private Bitmap(int width, int height, int rowBytes, Config config, boolean isMutable) {
        if (width <= 0 || height <= 0) {
            throw new IllegalArgumentException("width and height must be > 0");
        }
        mWidth = width;
        mHeight = height;
        mRowBytes = rowBytes;
        mConfig = config;
        mIsMutable = isMutable;
        mPixels = ByteBuffer.allocateDirect(Math.multiplyExact(rowBytes, height)).order(ByteOrder.nativeOrder());
    }

    /** A transparent black bitmap. */
    public static Bitmap createBitmap(int width, int height, Config config) {
        return new Bitmap(width, height, Math.multiplyExact(width, 4), config, true);
    }

    /** Desktop only: ARGB_8888. */
    public static Bitmap createBitmap(int width, int height) {
        return createBitmap(width, height, Config.ARGB_8888);
    }

    /** Desktop only: rows of more bytes than their pixels take. */
    public static Bitmap createPadded(int width, int height, int rowBytes) {
        return new Bitmap(width, height, rowBytes, Config.ARGB_8888, true);
    }

    public Bitmap copy(Config config, boolean isMutable) {
        Bitmap copy = new Bitmap(mWidth, mHeight, mWidth * 4, config, isMutable);
        for (int y = 0; y < mHeight; ++y) {
            for (int x = 0; x < mWidth; ++x) {
                copy.mPixels.putInt((y * mWidth + x) * 4, mPixels.getInt(y * mRowBytes + x * 4));
            }
        }
        return copy;
    }

    public int getWidth() {
        return mWidth;
    }

    public int getHeight() {
        return mHeight;
    }

    public int getRowBytes() {
        return mRowBytes;
    }

    public int getByteCount() {
        return mRowBytes * mHeight;
    }

    public Config getConfig() {
        return mConfig;
    }

    public boolean isMutable() {
        return mIsMutable;
    }

    /** Gives the pixels up; native code that locks the bitmap gets none from now on. */
    public void recycle() {
        mPixels = null;
    }

    public boolean isRecycled() {
        return mPixels == null;
    }

    /** 0xAARRGGBB. */
    public int getPixel(int x, int y) {
        int at = y * mRowBytes + x * 4;
        return (mPixels.get(at + 3) & 255) << 24 | (mPixels.get(at) & 255) << 16 | (mPixels.get(at + 1) & 255) << 8
                | mPixels.get(at + 2) & 255;
    }

    public void setPixel(int x, int y, int color) {
        int at = y * mRowBytes + x * 4;
        mPixels.put(at, (byte) (color >> 16));
        mPixels.put(at + 1, (byte) (color >> 8));
        mPixels.put(at + 2, (byte) color);
        mPixels.put(at + 3, (byte) (color >> 24));
    }

    public void eraseColor(int color) {
        for (int y = 0; y < mHeight; ++y) {
            for (int x = 0; x < mWidth; ++x) {
                setPixel(x, y, color);
            }
        }
    }

    public boolean sameAs(Bitmap other) {
        return other != null && mWidth == other.mWidth && mHeight == other.mHeight && mConfig == other.mConfig
                && mRowBytes == other.mRowBytes && rewound(mPixels).equals(rewound(other.mPixels));
    }

    public void copyPixelsFromBuffer(Buffer source) {
        rewound(mPixels).put((ByteBuffer) source);
    }

    public void copyPixelsToBuffer(Buffer target) {
        ((ByteBuffer) target).put(rewound(mPixels));
    }

    private static ByteBuffer rewound(ByteBuffer buffer) {
        ByteBuffer all = buffer.duplicate();
        all.clear();
        return all;
    }

    /** Locks that native code has not given back; 0 whenever no native call is running. Desktop only. */
    public int getLockCount() {
        return mLockCount;
    }
}
