// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import android.graphics.Bitmap;
import android.graphics.SurfaceTexture;
import android.opengl.GLSurfaceView;
import java.util.LinkedHashMap;
import java.util.Map;
import javax.microedition.khronos.egl.EGLConfig;
import javax.microedition.khronos.opengles.GL10;

/**
 * Draws camera frames through a GPU filter to a GLSurfaceView.
 *
 * <pre>{@code
 * FilterRenderer renderer = new FilterRenderer("ImageFilterXray", texture -> {
 *     texture.setOnFrameAvailableListener(t -> view.requestRender());
 *     mainThread.post(() -> openCamera(new Surface(texture)));
 * });
 * renderer.setFrameSize(1280, 720);
 * view.setEGLContextClientVersion(3);
 * view.setRenderer(renderer);
 * view.setRenderMode(GLSurfaceView.RENDERMODE_WHEN_DIRTY);
 * }</pre>
 *
 * <p>The frame fills the view; what sticks out at two sides is cut off. Filter, parameters, frame size and rotation may
 * be set on any thread, at any time; the next frame shows them. The renderer's own methods are the view's to call. When
 * the view has lost its context and made another, everything is made again, with a new SurfaceTexture.
 *
 * <p>Close it on the view's thread before the view goes: {@code view.queueEvent(renderer::close)}.
 */
public final class FilterRenderer implements GLSurfaceView.Renderer, AutoCloseable {
    /** Connects the camera. */
    public interface CameraListener {
        /**
         * The texture for camera frames is there, for the first time or again after the context was lost. Called on the
         * view's thread.
         *
         * @param texture the renderer's own; it is released by the renderer
         */
        void onCameraTexture(SurfaceTexture texture);
    }

    private final CameraListener listener;

    // Guarded by this object.
    private FilterTable table;
    private boolean isFilterChanged;
    private final Map<String, Object> values = new LinkedHashMap<>();
    private final Map<String, Object> changedValues = new LinkedHashMap<>();
    private int frameWidth;
    private int frameHeight;
    private int degrees;
    private boolean isClosed;

    // Of the view's thread.
    private Thread owner;
    private Handle handle;
    private SurfaceTexture camera;
    private int texture;
    private int bufferWidth;
    private int bufferHeight;
    private int viewWidth;
    private int viewHeight;
    private final float[] matrix = new float[16];

    /**
     * A renderer; nothing is made before the view's thread asks for it.
     *
     * @param filter one of {@link Filter#names}
     * @param listener connects the camera; not null
     * @throws IllegalArgumentException when there is no such filter or the listener is null
     */
    public FilterRenderer(String filter, CameraListener listener) {
        table = FilterTable.of(filter);
        this.listener = Checks.notNull(listener, "listener");
    }

    /**
     * Changes the filter. All parameters start from their defaults.
     *
     * @param name one of {@link Filter#names}
     * @throws IllegalArgumentException when there is no such filter
     */
    public synchronized void setFilter(String name) {
        table = FilterTable.of(name);
        isFilterChanged = true;
        values.clear();
        changedValues.clear();
    }

    /**
     * Sets a parameter of one value.
     *
     * @param parameter its name
     * @param value within the parameter's range
     * @throws IllegalArgumentException for an unknown name or a value that does not fit
     */
    public void set(String parameter, float value) {
        set(parameter, new float[] {value});
    }

    /**
     * Sets a parameter of several values.
     *
     * @param parameter its name; "mTexVertices" is the renderer's own
     * @param numbers as many as the parameter has, each within its range
     * @throws IllegalArgumentException for an unknown name or a value that does not fit
     */
    public synchronized void set(String parameter, float[] numbers) {
        table.parameter(parameter).check(numbers);
        remember(parameter, numbers.clone());
    }

    /**
     * Sets a parameter that is a bitmap.
     *
     * @param parameter its name
     * @param bitmap of the size that the parameter's range says, ARGB_8888 without padding; a copy is taken
     * @throws IllegalArgumentException for an unknown name or a bitmap that does not fit
     * @throws IllegalStateException when memory is short
     */
    public synchronized void set(String parameter, Bitmap bitmap) {
        table.parameter(parameter).check(bitmap);
        Bitmap copy = bitmap.copy(Bitmap.Config.ARGB_8888, false);
        if (copy == null) {
            throw new IllegalStateException("memory is short");
        }
        remember(parameter, copy);
    }

    private void remember(String parameter, Object value) {
        // Last set, last sent: some parameters switch each other off.
        values.remove(parameter);
        values.put(parameter, value);
        changedValues.remove(parameter);
        changedValues.put(parameter, value);
    }

    /**
     * The size that the camera shall deliver, as it lies in the sensor: usually the longer side first.
     *
     * @param width in pixels, at least 1
     * @param height in pixels, at least 1
     * @throws IllegalArgumentException for a size below 1
     */
    public synchronized void setFrameSize(int width, int height) {
        frameWidth = Checks.inRange(width, 1, Integer.MAX_VALUE, "width");
        frameHeight = Checks.inRange(height, 1, Integer.MAX_VALUE, "height");
    }

    /**
     * Turns the picture, against the display's own rotation.
     *
     * @param clockwiseDegrees 0, 90, 180 or 270
     * @throws IllegalArgumentException for any other angle
     */
    public synchronized void setRotation(int clockwiseDegrees) {
        if (clockwiseDegrees % 90 != 0) {
            throw new IllegalArgumentException("clockwiseDegrees is " + clockwiseDegrees + "; it must be 0, 90, 180 or 270");
        }
        degrees = Checks.inRange(clockwiseDegrees, 0, 270, "clockwiseDegrees");
    }

    /**
     * The view's: a context has been made; what an earlier one had is gone.
     *
     * @param gl not used
     * @param config not used
     * @throws IllegalStateException when there is no context on this thread, or the renderer is closed
     */
    @Override
    public void onSurfaceCreated(GL10 gl, EGLConfig config) {
        synchronized (this) {
            if (isClosed) {
                throw new IllegalStateException("this FilterRenderer is closed");
            }
            owner = Thread.currentThread();
            isFilterChanged = true;
        }
        letGo();
        texture = Natives.createCameraTexture();
        camera = new SurfaceTexture(texture);
        bufferWidth = 0;
        bufferHeight = 0;
        openFilter();
        resizeBuffer();
        listener.onCameraTexture(camera);
    }

    /**
     * The view's: its size has changed.
     *
     * @param gl not used
     * @param width in pixels
     * @param height in pixels
     * @throws IllegalStateException on another thread than the view's
     */
    @Override
    public void onSurfaceChanged(GL10 gl, int width, int height) {
        checkThread();
        viewWidth = width;
        viewHeight = height;
    }

    /**
     * The view's: draws the newest camera frame. After {@link #close} nothing is drawn.
     *
     * @param gl not used
     * @throws IllegalStateException on another thread than the view's
     */
    @Override
    public void onDrawFrame(GL10 gl) {
        synchronized (this) {
            if (isClosed) {
                return;
            }
        }
        checkThread();
        resizeBuffer();
        openFilter();
        camera.updateTexImage();
        camera.getTransformMatrix(matrix);
        int width = bufferWidth > 0 ? bufferWidth : viewWidth;
        int height = bufferHeight > 0 ? bufferHeight : viewHeight;
        if (viewWidth < 1 || viewHeight < 1) {
            return;
        }
        float[] corners = TextureCorners.of(matrix, width, height, viewWidth, viewHeight, rotation());
        long address = handle.enter();
        try {
            Natives.surfaceFilterSet(address, "mTexVertices", corners);
            Natives.surfaceFilterDraw(address, texture, width, height, viewWidth, viewHeight);
        } finally {
            handle.exit();
        }
    }

    private synchronized int rotation() {
        return degrees;
    }

    private synchronized void resizeBuffer() {
        if (frameWidth > 0 && (frameWidth != bufferWidth || frameHeight != bufferHeight)) {
            bufferWidth = frameWidth;
            bufferHeight = frameHeight;
            camera.setDefaultBufferSize(bufferWidth, bufferHeight);
        }
    }

    /** Makes the filter if it has changed, and sends the parameters that have. */
    private synchronized void openFilter() {
        if (isFilterChanged) {
            if (handle != null) {
                handle.close();
            }
            long address = Natives.surfaceFilterOpen(table.name);
            handle = new Handle(this, "FilterRenderer (" + table.name + ")", address, Natives::surfaceFilterClose);
            isFilterChanged = false;
            changedValues.clear();
            changedValues.putAll(values);
        }
        long address = handle.enter();
        try {
            for (Map.Entry<String, Object> entry : changedValues.entrySet()) {
                send(address, entry.getKey(), entry.getValue());
            }
        } finally {
            handle.exit();
        }
        changedValues.clear();
    }

    private static void send(long address, String parameter, Object value) {
        if (value instanceof Bitmap) {
            Bitmap bitmap = (Bitmap) value;
            Natives.surfaceFilterSetBitmap(address, parameter, bitmap, bitmap.getWidth(), bitmap.getHeight());
        } else {
            Natives.surfaceFilterSet(address, parameter, (float[]) value);
        }
    }

    /**
     * Frees the filter, the texture and the SurfaceTexture. Closing twice is allowed.
     *
     * @throws IllegalStateException on another thread than the view's; nothing is freed then
     */
    @Override
    public void close() {
        synchronized (this) {
            if (owner != null) {
                checkThread();
            }
            if (isClosed) {
                return;
            }
            isClosed = true;
        }
        int last = texture;
        letGo();
        if (last != 0) {
            Natives.deleteCameraTexture(last);
        }
    }

    // Does not delete the texture: after a lost context its name may be another's in the new one.
    private void letGo() {
        if (handle != null) {
            handle.close();
            handle = null;
        }
        if (camera != null) {
            camera.release();
            camera = null;
        }
        texture = 0;
    }

    private synchronized void checkThread() {
        if (Thread.currentThread() != owner) {
            throw new IllegalStateException(owner == null ? "the view has made no surface yet"
                    : "this belongs to the view's thread \"" + owner.getName() + "\": use view.queueEvent");
        }
    }
}
