// SPDX-License-Identifier: Apache-2.0
package com.tervo.media.render;

import android.graphics.Bitmap;

/** Blurs a bitmap in place and dims it towards a colour: the frosted background behind dialogs. */
public class BlurRender {
    static {
        System.loadLibrary("korvane");
    }

    /**
     * Blurs and dims. Nothing is checked; korvane.effects.Blur does that.
     *
     * @param bitmap an ARGB_8888 bitmap of at least width * height pixels, rows packed
     * @param width in pixels; below 1 nothing happens
     * @param height in pixels; below 1 nothing happens
     * @param radius 0 (no blur) to 254
     * @param blendColor 0xAARRGGBB; its alpha is ignored
     * @param blendAlpha weight of the colour, 1 to 256 (the colour alone); 0 gives black
     */
    public native void nativeProcess(
            Bitmap bitmap, int width, int height, int radius, int blendColor, int blendAlpha);
}
