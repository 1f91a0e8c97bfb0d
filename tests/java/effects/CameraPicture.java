// SPDX-License-Identifier: Apache-2.0
/** What a view and a camera do to a renderer: a context with a surface, and a picture in a camera texture. */
final class CameraPicture {
    private CameraPicture() {}

    /** Makes a surface of this size current on this thread. */
    static native void openSurface(int width, int height);

    static native void closeSurface();

    /** The address of what is current on this thread. */
    static native long currentContext();

    /** Puts RGBA pixels, the top row first, behind an external texture. */
    static native void show(int texture, int width, int height, byte[] rgba);

    /** The surface's RGBA pixels, the top row first. */
    static native byte[] surfacePixels(int width, int height);
}
