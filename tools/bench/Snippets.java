// SPDX-License-Identifier: Apache-2.0
// What the Java calls of the gallery stand in; see gallery.py.
import android.graphics.Bitmap;
import java.util.List;
import korvane.effects.*;

abstract class Snippets {
    Bitmap bitmap;
    byte[] yuyv;
    byte[] nv21;
    List<byte[]> frames;
    int width;
    int height;
    float gyroX;
    float gyroY;

//CALLS//
}
