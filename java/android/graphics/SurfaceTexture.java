// SPDX-License-Identifier: Apache-2.0
package android.graphics;

import java.util.Arrays;

/**
 * The desktop's stand-in for a camera's texture. No camera writes to it: a test puts its picture behind the texture's
 * name, and says by what matrix it is to be read.
 */
public class SurfaceTexture {
    /** Is told of every frame. */
    public interface OnFrameAvailableListener {
        void onFrameAvailable(SurfaceTexture texture);
    }

    private final int mTexture;
    private final float[] mMatrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    private int mBufferWidth;
    private int mBufferHeight;
    private boolean mIsReleased;

    public SurfaceTexture(int textureName) {
        mTexture = textureName;
    }

    /** Without effect: there are no frames. */
    public void setOnFrameAvailableListener(OnFrameAvailableListener listener) {}

    public void setDefaultBufferSize(int width, int height) {
        mBufferWidth = width;
        mBufferHeight = height;
    }

    public void updateTexImage() {
        if (mIsReleased) {
            throw new IllegalStateException("the texture is released");
        }
    }

    public void getTransformMatrix(float[] matrix) {
        System.arraycopy(mMatrix, 0, matrix, 0, mMatrix.length);
    }

    public void release() {
        mIsReleased = true;
    }

    public boolean isReleased() {
        return mIsReleased;
    }

    /** Desktop only. */
    public int getTexture() {
        return mTexture;
    }

    /** Desktop only. */
    public String getBufferSize() {
        return mBufferWidth + " x " + mBufferHeight;
    }

    /** Desktop only: 16 values in columns. */
    public void setTransformMatrix(float... matrix) {
        System.arraycopy(Arrays.copyOf(matrix, mMatrix.length), 0, mMatrix, 0, mMatrix.length);
    }
}
