// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import android.graphics.Bitmap;
import java.util.List;

/**
 * A GPU filter for bitmaps.
 *
 * <pre>{@code
 * try (Filter filter = Filter.open("ImageFilterDistorted")) {
 *     filter.set("mStrength", 3f).apply(bitmap);
 * }
 * }</pre>
 *
 * <p>A filter belongs to the thread that opened it. It has an OpenGL ES context of its own, off screen, and leaves the
 * context that is current on the thread as it was: several filters on one thread, or one on the thread of a
 * GLSurfaceView, do not disturb each other. Opening makes that context and compiles a shader, so keep a filter while it
 * is in use.
 * For each pixel of the largest bitmap it takes 8 bytes of GPU memory, and 8 bytes more while it works.
 *
 * <p>{@link FilterRenderer} draws camera frames to the screen.
 */
public final class Filter implements AutoCloseable {
    // The picture's top left corner is where its memory begins; the library's own corners are a camera's.
    private static final float[] UPRIGHT = {0, 0, 1, 0, 0, 1, 1, 1};

    private final FilterTable table;
    private final Thread owner = Thread.currentThread();
    private final Handle handle;

    private Filter(FilterTable table) {
        this.table = table;
        handle = new Handle(this, "Filter (" + table.name + ")", Natives.filterOpen(table.name), Natives::filterClose);
    }

    /**
     * The filters that there are.
     *
     * @return their names, as {@link #open} takes them
     */
    public static List<String> names() {
        return FilterTable.names();
    }

    /**
     * What a filter does, for people.
     *
     * @param name of the filter
     * @return one line
     * @throws IllegalArgumentException when there is no such filter
     */
    public static String summary(String name) {
        return FilterTable.of(name).summary;
    }

    /**
     * The parameters of a filter.
     *
     * @param name of the filter
     * @return its own first, then those that every filter has
     * @throws IllegalArgumentException when there is no such filter
     */
    public static List<FilterParameter> parameters(String name) {
        return FilterTable.of(name).parameters;
    }

    /**
     * Opens a filter on the calling thread.
     *
     * @param name one of {@link #names}
     * @return the filter, with all parameters at their defaults
     * @throws IllegalArgumentException when there is no such filter
     * @throws IllegalStateException when there is no OpenGL ES 3 or memory is short
     */
    public static Filter open(String name) {
        Filter filter = new Filter(FilterTable.of(name));
        filter.set("mTexVertices", UPRIGHT);
        return filter;
    }

    /**
     * The filter's name.
     *
     * @return as it was opened
     */
    public String name() {
        return table.name;
    }

    /**
     * The filter's parameters.
     *
     * @return its own first, then those that every filter has
     */
    public List<FilterParameter> parameters() {
        return table.parameters;
    }

    /**
     * Sets a parameter of one value.
     *
     * @param parameter its name
     * @param value within the parameter's range
     * @return this filter
     * @throws IllegalArgumentException for an unknown name or a value that does not fit
     * @throws IllegalStateException when the filter is closed or belongs to another thread
     */
    public Filter set(String parameter, float value) {
        return set(parameter, new float[] {value});
    }

    /**
     * Sets a parameter of several values.
     *
     * @param parameter its name
     * @param values as many as the parameter has, each within its range
     * @return this filter
     * @throws IllegalArgumentException for an unknown name or a value that does not fit
     * @throws IllegalStateException when the filter is closed or belongs to another thread
     */
    public Filter set(String parameter, float[] values) {
        table.parameter(parameter).check(values);
        long address = enter();
        try {
            Natives.filterSet(address, parameter, values);
        } finally {
            handle.exit();
        }
        return this;
    }

    /**
     * Sets a parameter that is a bitmap. The filter takes a copy.
     *
     * @param parameter its name
     * @param bitmap of the size that the parameter's range says, ARGB_8888 without padding
     * @return this filter
     * @throws IllegalArgumentException for an unknown name or a bitmap that does not fit
     * @throws IllegalStateException when the filter is closed or belongs to another thread
     */
    public Filter set(String parameter, Bitmap bitmap) {
        table.parameter(parameter).check(bitmap);
        long address = enter();
        try {
            Natives.filterSetBitmap(address, parameter, bitmap, bitmap.getWidth(), bitmap.getHeight());
        } finally {
            handle.exit();
        }
        return this;
    }

    /**
     * Filters a bitmap in place.
     *
     * @param bitmap not null, mutable, not recycled, of Bitmap.Config.ARGB_8888 without padding between rows
     * @throws IllegalArgumentException for a bitmap that does not fit
     * @throws IllegalStateException when the filter is closed, belongs to another thread, has lost its context, or the
     *     bitmap is larger than the GPU can draw
     */
    public void apply(Bitmap bitmap) {
        Checks.writable(bitmap);
        long address = enter();
        try {
            Natives.filterApply(address, bitmap, bitmap.getWidth(), bitmap.getHeight());
        } finally {
            handle.exit();
        }
    }

    /**
     * Frees the filter. Closing twice is allowed.
     *
     * @throws IllegalStateException when it belongs to another thread; it stays open then
     */
    @Override
    public void close() {
        checkThread();
        handle.close();
    }

    private long enter() {
        checkThread();
        return handle.enter();
    }

    private void checkThread() {
        if (Thread.currentThread() != owner) {
            throw new IllegalStateException("this filter was opened on thread \"" + owner.getName()
                    + "\" and used on \"" + Thread.currentThread().getName() + "\"; open one on each thread");
        }
    }
}
