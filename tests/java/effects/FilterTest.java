// SPDX-License-Identifier: Apache-2.0
import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNotEquals;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import android.graphics.Bitmap;
import android.graphics.SurfaceTexture;
import java.io.File;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.FutureTask;
import korvane.effects.Filter;
import korvane.effects.FilterParameter;
import korvane.effects.FilterRenderer;
import korvane.effects.ProgramCache;
import org.junit.Test;

/**
 * Filter and FilterRenderer on a real GL implementation. The test program does what a view and a camera do to a
 * renderer: a context with a surface, and a picture in a camera texture.
 */
public class FilterTest extends EffectsSupport {
    /** Makes a surface of this size current on this thread. */
    static native void openSurface(int width, int height);

    static native void closeSurface();

    /** The address of what is current on this thread. */
    static native long currentContext();

    /** Puts RGBA pixels, the top row first, behind an external texture. */
    static native void show(int texture, int width, int height, byte[] rgba);

    /** The surface's RGBA pixels, the top row first. */
    static native byte[] surfacePixels(int width, int height);

    private static final int RED = 0xFFFF0000;
    private static final int GREEN = 0xFF00FF00;
    private static final int BLUE = 0xFF0000FF;
    private static final int GREY = 0xFF808080;

    // Four fields of one color each: red and green above, blue and grey below.
    private static Bitmap fields(int width, int height) {
        Bitmap bitmap = Bitmap.createBitmap(width, height, Bitmap.Config.ARGB_8888);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                boolean left = x < width / 2;
                bitmap.setPixel(x, y, y < height / 2 ? left ? RED : GREEN : left ? BLUE : GREY);
            }
        }
        return bitmap;
    }

    private static int[] corners(Bitmap bitmap) {
        int right = bitmap.getWidth() - 1;
        int bottom = bitmap.getHeight() - 1;
        return new int[] {bitmap.getPixel(0, 0), bitmap.getPixel(right, 0), bitmap.getPixel(0, bottom),
            bitmap.getPixel(right, bottom)};
    }

    private static void onOtherThread(Work work) throws Exception {
        FutureTask<Void> task = new FutureTask<>(() -> {
            work.run();
            return null;
        });
        new Thread(task).start();
        throw (Exception) assertThrows(ExecutionException.class, task::get).getCause();
    }

    @Test
    public void tableTellsNamesTypesRangesAndDefaults() {
        assertEquals(8, Filter.names().size());
        assertEquals("ImageFilterNone", Filter.names().get(0));
        List<String> lines = new ArrayList<>();
        for (FilterParameter p : Filter.parameters("ImageFilterTable")) {
            lines.add(p.name() + " " + p.type() + " " + p.count() + " " + p.minimum() + " " + p.maximum() + " "
                    + p.defaultValue());
        }
        assertEquals(Arrays.asList("mFilterBitmap BITMAP 1 -Infinity Infinity null", "mStrength FLOAT 1 0.0 1.0 1.0",
                "mPosVertices ARRAY 8 -Infinity Infinity null", "mTexVertices ARRAY 8 -Infinity Infinity null",
                "mTextureMatrix ARRAY 16 -Infinity Infinity null"), lines);
        // The filter squares what it is given.
        assertEquals(Math.sqrt(0.2), Filter.parameters("ImageFilterTimetunnel").get(0).defaultValue(), 1e-6);
        assertFalse(Filter.summary("ImageFilterXray").isEmpty());
        badArgument("there is no filter \"Xray\"", () -> Filter.parameters("Xray"));
    }

    @Test
    public void everyFilterStartsFromTheDefaultsOfItsTable() {
        for (String name : Filter.names()) {
            Bitmap plain = fields(32, 24);
            Bitmap set = fields(32, 24);
            try (Filter one = Filter.open(name); Filter other = Filter.open(name)) {
                one.apply(plain);
                for (FilterParameter parameter : other.parameters()) {
                    // The mirror's axes switch each other off, and one is off at first.
                    if (parameter.defaultValue() != null && !parameter.name().equals("mCenterx")) {
                        other.set(parameter.name(), parameter.defaultValue());
                    }
                }
                other.apply(set);
            }
            assertTrue(name, plain.sameAs(set));
            assertEquals(0, plain.getLockCount());
        }
    }

    @Test
    public void picturesStayUprightAndFiltersOnOneThreadApart() {
        try (Filter none = Filter.open("ImageFilterNone"); Filter mirror = Filter.open("ImageFilterMirror")) {
            Bitmap bitmap = fields(13, 9);
            Bitmap before = fields(13, 9);
            none.apply(bitmap);
            assertTrue(bitmap.sameAs(before));
            mirror.set("mCenterx", 0.5f).apply(bitmap);
            assertArrayEquals(new int[] {RED, RED, BLUE, BLUE}, corners(bitmap));
            Bitmap other = fields(20, 30);
            none.apply(other);
            assertTrue(other.sameAs(fields(20, 30)));
            mirror.set("mCentery", 0.5f).apply(other);
            assertArrayEquals(new int[] {RED, GREEN, RED, GREEN}, corners(other));
            assertEquals(0, currentContext());
        }
    }

    @Test
    public void wrongUseIsRefusedAndATableIsTaken() throws Exception {
        Bitmap bitmap = fields(4, 4);
        Filter filter = Filter.open("ImageFilterTable");
        badArgument("name is null", () -> Filter.open(null));
        badArgument("there is no filter", () -> Filter.open("imagefilternone"));
        badArgument("it has [mFilterBitmap, mStrength", () -> filter.set("strength", 1));
        badArgument("mStrength is 1.5", () -> filter.set("mStrength", 1.5f));
        badArgument("mStrength is NaN", () -> filter.set("mStrength", Float.NaN));
        badArgument("takes 1 values, not 2", () -> filter.set("mStrength", new float[2]));
        badArgument("is null", () -> filter.set("mStrength", (float[]) null));
        badArgument("takes 8 values, not 7", () -> filter.set("mTexVertices", new float[7]));
        badArgument("takes a bitmap", () -> filter.set("mFilterBitmap", 1));
        badArgument("not a bitmap", () -> filter.set("mStrength", bitmap));
        badArgument("takes 4096 x 64 pixels, not 4 x 4", () -> filter.set("mFilterBitmap", bitmap));
        badArgument("bitmap is null", () -> filter.apply(null));
        badArgument("immutable", () -> filter.apply(bitmap.copy(Bitmap.Config.ARGB_8888, false)));
        badState("draws at most", () -> filter.apply(Bitmap.createBitmap(40000, 1)));
        String opened = "opened on thread \"" + Thread.currentThread().getName() + "\"";
        badState(opened, () -> onOtherThread(() -> filter.set("mStrength", 1)));
        badState(opened, () -> onOtherThread(filter::close));
        Bitmap table = Bitmap.createBitmap(4096, 64);
        table.eraseColor(BLUE);
        filter.set("mFilterBitmap", table).set("mStrength", 1).apply(bitmap);
        assertArrayEquals(new int[] {BLUE, BLUE, BLUE, BLUE}, corners(bitmap));
        filter.close();
        filter.close();
        badState("is closed", () -> filter.apply(bitmap));
        badState("is closed", () -> filter.set("mStrength", 1));
        assertEquals(0, bitmap.getLockCount());
    }

    @Test
    public void programsAreCachedAndRefusedOnesReplaced() throws Exception {
        File folder = Files.createTempDirectory("korvane").toFile();
        ProgramCache.setDirectory(folder);
        File file = new File(folder, "ImageFilterXray.osb");
        Filter.open("ImageFilterXray").close();
        // Mesa's plain rasteriser gives no binaries.
        boolean hasBinaries = !"softpipe".equals(System.getenv("GALLIUM_DRIVER"));
        assertEquals(hasBinaries, file.exists());
        byte[] good = hasBinaries ? Files.readAllBytes(file.toPath()) : null;
        Files.write(file.toPath(), new byte[] {1, 2, 3, 4, 5, 6, 7, 8});
        Bitmap bitmap = fields(4, 4);
        try (Filter filter = Filter.open("ImageFilterXray")) {
            filter.apply(bitmap);
        }
        assertNotEquals(RED, bitmap.getPixel(0, 0));
        assertArrayEquals(good, hasBinaries ? Files.readAllBytes(file.toPath()) : null);
        assertEquals(hasBinaries ? 1 : 0, folder.list().length);
        assertTrue((!hasBinaries || file.delete()) && folder.delete());
    }

    @Test
    public void forgottenFiltersAreFreedOnAnotherThread() throws Exception {
        String log = logOfForgotten(2, () -> {
            Filter.open("ImageFilterTable").apply(fields(4, 4));
            openSurface(4, 4);
            new FilterRenderer("ImageFilterNone", texture -> {}).onSurfaceCreated(null, null);
            closeSurface();
        });
        assertTrue(log, log.contains("a Filter (ImageFilterTable) was not closed"));
        assertTrue(log, log.contains("a FilterRenderer (ImageFilterNone) was not closed"));
    }

    // A camera's frame whose texture has its rows from the top, as the matrix says.
    private static final float[] FROM_THE_TOP = {1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0, 0, 1, 0, 1};

    private static Bitmap drawn(FilterRenderer renderer, int width, int height) {
        renderer.onSurfaceChanged(null, width, height);
        renderer.onDrawFrame(null);
        Bitmap bitmap = Bitmap.createBitmap(width, height);
        bitmap.copyPixelsFromBuffer(ByteBuffer.wrap(surfacePixels(width, height)));
        return bitmap;
    }

    private static byte[] bytes(Bitmap bitmap) {
        byte[] bytes = new byte[bitmap.getByteCount()];
        bitmap.copyPixelsToBuffer(ByteBuffer.wrap(bytes));
        return bytes;
    }

    @Test
    public void rendererDrawsCameraFrames() {
        openSurface(16, 16);
        long context = currentContext();
        SurfaceTexture[] texture = new SurfaceTexture[1];
        FilterRenderer renderer = new FilterRenderer("ImageFilterNone", camera -> texture[0] = camera);
        badState("no surface yet", () -> renderer.onDrawFrame(null));
        renderer.setFrameSize(16, 16);
        renderer.onSurfaceCreated(null, null);
        assertEquals("16 x 16", texture[0].getBufferSize());
        texture[0].setTransformMatrix(FROM_THE_TOP);
        show(texture[0].getTexture(), 16, 16, bytes(fields(16, 16)));
        assertArrayEquals(new int[] {RED, GREEN, BLUE, GREY}, corners(drawn(renderer, 16, 16)));

        Object[][] turns = {{90, BLUE, RED, GREY, GREEN}, {180, GREY, BLUE, GREEN, RED}, {270, GREEN, GREY, RED, BLUE},
            {0, RED, GREEN, BLUE, GREY}};
        for (Object[] turn : turns) {
            renderer.setRotation((Integer) turn[0]);
            Integer[] seen = Arrays.stream(corners(drawn(renderer, 16, 16))).boxed().toArray(Integer[]::new);
            assertArrayEquals("turned by " + turn[0], Arrays.copyOfRange(turn, 1, 5), seen);
        }
        // A view of half the width shows the middle half of the frame's columns.
        Bitmap narrow = drawn(renderer, 8, 16);
        assertEquals(RED, narrow.getPixel(3, 0));
        assertEquals(GREEN, narrow.getPixel(4, 0));

        // A filter opened beside it leaves the view's context as it was.
        try (Filter filter = Filter.open("ImageFilterXray")) {
            filter.apply(fields(4, 4));
            assertEquals(context, currentContext());
            renderer.setFilter("ImageFilterMirror");
            renderer.set("mCenterx", 0.5f);
            assertArrayEquals(new int[] {RED, RED, BLUE, BLUE}, corners(drawn(renderer, 16, 16)));
        }
        badArgument("mCenterx", () -> renderer.set("mCenterx", 2));
        badArgument("clockwiseDegrees", () -> renderer.setRotation(45));
        badArgument("width", () -> renderer.setFrameSize(0, 1));
        badState("view.queueEvent", () -> onOtherThread(() -> renderer.onDrawFrame(null)));

        // The context goes and another comes: all is made again, with the parameters that were set.
        SurfaceTexture first = texture[0];
        closeSurface();
        openSurface(16, 16);
        renderer.onSurfaceCreated(null, null);
        assertTrue(first.isReleased());
        assertNotEquals(first, texture[0]);
        texture[0].setTransformMatrix(FROM_THE_TOP);
        show(texture[0].getTexture(), 16, 16, bytes(fields(16, 16)));
        assertArrayEquals(new int[] {RED, RED, BLUE, BLUE}, corners(drawn(renderer, 16, 16)));

        renderer.close();
        renderer.close();
        assertTrue(texture[0].isReleased());
        renderer.onDrawFrame(null);
        badState("this FilterRenderer is closed", () -> renderer.onSurfaceCreated(null, null));
        closeSurface();
        badState("no OpenGL ES context", () -> new FilterRenderer("ImageFilterNone", t -> {}).onSurfaceCreated(null, null));
    }
}
