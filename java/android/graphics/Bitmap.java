package android.graphics;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;

/**
 * The desktop's stand-in for Android's bitmap: RGBA pixels, rows packed, in a direct buffer. Only what the library's
 * callers and tests use. The native side reads the fields by name.
 */
public final class Bitmap {
    private ByteBuffer mPixels;
    private final int mWidth;
    private final int mHeight;
    private int mLockCount;

    private Bitmap(int width, int height) {
        mWidth = width;
        mHeight = height;
        mPixels = ByteBuffer.allocateDirect(Math.multiplyExact(Math.multiplyExact(width, height), 4))
                .order(ByteOrder.nativeOrder());
    }

    /** A transparent black bitmap. */
    public static Bitmap createBitmap(int width, int height) {
        if (width <= 0 || height <= 0) {
            throw new IllegalArgumentException("width and height must be > 0");
        }
        return new Bitmap(width, height);
    }

    public int getWidth() {
        return mWidth;
    }

    public int getHeight() {
        return mHeight;
    }

    public int getRowBytes() {
        return mWidth * 4;
    }

    /** Gives the pixels up; native code that locks the bitmap gets none from now on. */
    public void recycle() {
        mPixels = null;
    }

    public boolean isRecycled() {
        return mPixels == null;
    }

    public void copyPixelsFromBuffer(ByteBuffer source) {
        ByteBuffer target = mPixels.duplicate();
        target.clear();
        target.put(source);
    }

    public void copyPixelsToBuffer(ByteBuffer target) {
        ByteBuffer source = mPixels.duplicate();
        source.clear();
        target.put(source);
    }

    /** Locks that native code has not given back; 0 whenever no native call is running. Desktop only. */
    public int getLockCount() {
        return mLockCount;
    }
}
