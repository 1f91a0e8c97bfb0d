// SPDX-License-Identifier: Apache-2.0
package android.opengl;

import javax.microedition.khronos.egl.EGLConfig;
import javax.microedition.khronos.opengles.GL10;

/** The desktop's stand-in for Android's view that draws with OpenGL ES: only the interface that a renderer fulfils. */
public class GLSurfaceView {
    /** Draws the view's frames, on the view's own thread. */
    public interface Renderer {
        void onSurfaceCreated(GL10 gl, EGLConfig config);

        void onSurfaceChanged(GL10 gl, int width, int height);

        void onDrawFrame(GL10 gl);
    }
}
