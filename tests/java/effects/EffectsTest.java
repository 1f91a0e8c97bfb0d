// SPDX-License-Identifier: Apache-2.0
import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNotNull;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import android.graphics.Bitmap;
import com.tervo.media.render.BlurRender;
import java.io.File;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Random;
import java.util.concurrent.atomic.AtomicInteger;
import korvane.effects.Blur;
import korvane.effects.Burst;
import korvane.effects.CameraFrames;
import korvane.effects.ExposureAdvisor;
import korvane.effects.Palette;
import korvane.effects.Panorama;
import korvane.effects.ProgramCache;
import korvane.effects.TimestampStamp;
import org.junit.Test;

/** What korvane.effects does without a GPU, and how it refuses wrong use. */
public class EffectsTest extends EffectsSupport {
    private static final Bitmap.Config ARGB = Bitmap.Config.ARGB_8888;

    private static Bitmap noise(int width, int height, int seed) {
        Bitmap bitmap = Bitmap.createBitmap(width, height, ARGB);
        byte[] bytes = new byte[bitmap.getByteCount()];
        new Random(seed).nextBytes(bytes);
        bitmap.copyPixelsFromBuffer(ByteBuffer.wrap(bytes));
        return bitmap;
    }

    @Test
    public void bitmapsThatDoNotFitAreRefused() {
        Bitmap recycled = Bitmap.createBitmap(4, 4, ARGB);
        recycled.recycle();
        Object[][] table = {
            {"bitmap is null", null},
            {"recycled", recycled},
            {"RGB_565", Bitmap.createBitmap(4, 4, Bitmap.Config.RGB_565)},
            {"HARDWARE", Bitmap.createBitmap(4, 4, Bitmap.Config.HARDWARE)},
            {"padding", Bitmap.createPadded(4, 4, 24)},
            {"immutable", Bitmap.createBitmap(4, 4, ARGB).copy(ARGB, false)},
        };
        for (Object[] row : table) {
            String reason = (String) row[0];
            Bitmap bitmap = (Bitmap) row[1];
            badArgument(reason, () -> Blur.apply(bitmap, 3));
            badArgument(reason, () -> Blur.dim(bitmap, 3, 0, 0.5f));
            if (!reason.equals("immutable")) {
                badArgument(reason, () -> Palette.of(bitmap, 4));
            }
        }
        assertEquals(1, Palette.of(Bitmap.createBitmap(4, 4, ARGB).copy(ARGB, false), 4).length);
    }

    @Test
    public void numbersOutOfRangeAreRefused() {
        Bitmap bitmap = noise(5, 5, 1);
        Bitmap before = bitmap.copy(ARGB, true);
        for (int radius : new int[] {-1, 255, Integer.MAX_VALUE}) {
            badArgument("radius", () -> Blur.apply(bitmap, radius));
        }
        for (float amount : new float[] {-0.1f, 1.1f, Float.NaN}) {
            badArgument("amount", () -> Blur.dim(bitmap, 1, 0, amount));
        }
        for (int count : new int[] {0, 513}) {
            badArgument("count", () -> Palette.of(bitmap, count));
        }
        int[][] sizes = {{0, 1}, {1, 0}, {-4, -4}, {Integer.MAX_VALUE, 2}};
        for (int[] size : sizes) {
            badArgument("", () -> new Panorama(size[0], size[1], Panorama.Format.NV21, null));
            badArgument("", () -> new Burst(size[0], size[1]));
            badArgument("", () -> new ExposureAdvisor(size[0], size[1], (aperture, gain) -> {}));
            badArgument("", () -> TimestampStamp.stamp(new byte[64], size[0], size[1], "1"));
        }
        badArgument("format", () -> new Panorama(4, 4, null, null));
        badArgument("listener", () -> new ExposureAdvisor(4, 4, null));
        assertTrue(bitmap.sameAs(before));
        assertEquals(0, bitmap.getLockCount());
    }

    @Test
    public void blurIsTheOlderEntrysAndDimmingReachesEveryPixel() {
        Bitmap expected = noise(17, 16, 2);
        Bitmap bitmap = expected.copy(ARGB, true);
        new BlurRender().nativeProcess(expected, 17, 16, 5, 0xFF102040, 112);
        Blur.dim(bitmap, 5, 0xFF102040, 112 / 256f);
        assertTrue(bitmap.sameAs(expected));

        // 15 pixels: the older entry would leave the last 7 as they are.
        Bitmap small = noise(5, 3, 3);
        int alpha = small.getPixel(4, 2) & 0xFF000000;
        Blur.dim(small, 0, 0x00123456, 1);
        assertEquals(alpha | 0x123456, small.getPixel(4, 2));
        Bitmap unchanged = small.copy(ARGB, true);
        Blur.apply(small, 0);
        Blur.dim(small, 0, 0xFFFFFFFF, 0);
        assertTrue(small.sameAs(unchanged));
        assertEquals(0, small.getLockCount());
    }

    @Test
    public void paletteHasThePicturesColors() {
        Bitmap bitmap = Bitmap.createBitmap(6, 5, ARGB);
        bitmap.eraseColor(0xFF0000FF);
        bitmap.setPixel(0, 0, 0x80FF0000);
        int[] palette = Palette.of(bitmap, 8);
        Arrays.sort(palette);
        assertArrayEquals(new int[] {0xFF0000FF, 0xFFFF0000}, palette);
    }

    @Test
    public void stampChangesTheFrameOrSaysThatItDoesNot() {
        byte[] frame = new byte[640 * 480 * 2];
        assertTrue(TimestampStamp.stamp(frame, 640, 480, "2026-01-02 03:04"));
        assertFalse(Arrays.equals(new byte[frame.length], frame));
        assertFalse(TimestampStamp.stamp(new byte[8 * 8 * 2], 8, 8, "2026-01-02 03:04"));
        badArgument("frame is null", () -> TimestampStamp.stamp(null, 4, 4, "1"));
        badArgument("it must have 32", () -> TimestampStamp.stamp(new byte[31], 4, 4, "1"));
        badArgument("text is null", () -> TimestampStamp.stamp(frame, 640, 480, null));
        badArgument("empty", () -> TimestampStamp.stamp(frame, 640, 480, ""));
        badArgument("'/'", () -> TimestampStamp.stamp(frame, 640, 480, "1/2"));
    }

    @Test
    public void panoramaReportsOffsetsAndAlwaysCloses() {
        byte[] frame = new byte[8 * 6 * 3 / 2];
        List<String> seen = new ArrayList<>();
        Panorama panorama = new Panorama(8, 6, Panorama.Format.NV21,
                (result, x, y, direction) -> seen.add(result + " " + x + " " + y + " " + direction));
        assertEquals(Panorama.Direction.NONE, panorama.direction());
        assertEquals(Panorama.Result.REFERENCE, panorama.feed(frame, 10, 10));
        assertEquals(Panorama.Result.TAKEN, panorama.feed(frame, 10, 8));
        assertEquals(Panorama.Result.WRONG_DIRECTION, panorama.feed(frame, 10, 13));
        assertEquals(Arrays.asList("TAKEN 70 0 LEFT_TO_RIGHT", "WRONG_DIRECTION -105 0 LEFT_TO_RIGHT"), seen);
        assertEquals(Panorama.Direction.LEFT_TO_RIGHT, panorama.direction());
        badArgument("frame is null", () -> panorama.feed(null, 1, 1));
        badArgument("it must have 72", () -> panorama.feed(new byte[71], 1, 1));
        badArgument("gyroX", () -> panorama.feed(frame, Float.NaN, 1));
        badArgument("gyroY", () -> panorama.feed(frame, 1, Float.POSITIVE_INFINITY));
        panorama.close();
        panorama.close();
        badState("this Panorama is closed", () -> panorama.feed(frame, 1, 1));
    }

    @Test
    public void closingFromWithinAListenerWaitsForItsEnd() {
        byte[] frame = new byte[4 * 4];
        Arrays.fill(frame, (byte) 200);
        ExposureAdvisor[] advisor = new ExposureAdvisor[1];
        AtomicInteger calls = new AtomicInteger();
        advisor[0] = new ExposureAdvisor(4, 4, (aperture, gain) -> {
            assertEquals(22, aperture, 0);
            assertEquals(-2, gain);
            advisor[0].close();
            badState("closed", () -> advisor[0].feed(frame));
            calls.incrementAndGet();
            throw new UnsupportedOperationException("of the listener");
        });
        assertThrows(UnsupportedOperationException.class, () -> advisor[0].feed(frame));
        assertEquals(1, calls.get());
        badState("this ExposureAdvisor is closed", () -> advisor[0].feed(frame));
        badArgument("it must have 16", () -> advisor[0].feed(new byte[15]));
    }

    @Test
    public void burstMergesEveryFrameThatWasPushed() {
        Burst burst = new Burst(64, 32);
        badState("no frame", burst::merge);
        byte[] frame = new byte[64 * 32 * 2];
        for (int value : new int[] {100, 200, 120}) {
            Arrays.fill(frame, (byte) value);
            burst.push(frame);
        }
        byte[] expected = new byte[frame.length];
        Arrays.fill(expected, (byte) 140);
        assertArrayEquals(expected, burst.merge());
        assertArrayEquals(expected, burst.merge());
        badState("merged already", () -> burst.push(frame));
        badArgument("it must have 4096", () -> burst.push(new byte[4095]));
        burst.close();
        badState("this Burst is closed", burst::merge);
    }

    @Test
    public void cameraFramesWithStridesArePacked() {
        byte[] nv21 = {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23, 30, 31, 32, 33, 60, 40, 61, 41, 70, 50, 71, 51};
        byte[] yuyv = {0, 40, 1, 60, 2, 41, 3, 61, 10, 40, 11, 60, 12, 41, 13, 61, 20, 50, 21, 70, 22, 51, 23, 71, 30, 50,
            31, 70, 32, 51, 33, 71};
        for (int step : new int[] {1, 2}) {
            ByteBuffer luma = plane(0, 4, 8, 1);
            ByteBuffer u = plane(40, 2, 9, step);
            ByteBuffer v = plane(60, 2, 9, step);
            assertArrayEquals(nv21, CameraFrames.nv21(luma, 8, u, v, 9, step, 4, 4));
            assertArrayEquals(yuyv, CameraFrames.yuyv(luma, 8, u, v, 9, step, 4, 4));
            assertEquals(1, luma.position());
            badArgument("u is null", () -> CameraFrames.nv21(luma, 8, null, v, 9, 1, 4, 4));
            badArgument("row stride of y", () -> CameraFrames.nv21(luma, 3, u, v, 9, 1, 4, 4));
            badArgument("pixel stride of u", () -> CameraFrames.yuyv(luma, 8, u, v, 9, 3, 4, 4));
            badArgument("even", () -> CameraFrames.yuyv(luma, 8, u, v, 9, 1, 3, 4));
            badArgument("y has 28 bytes; it must have 44", () -> CameraFrames.nv21(luma, 8, u, v, 9, 1, 4, 6));
        }
    }

    // A square of `first`, + 1 a column and + 10 a row. It begins at position 1 and ends with its last value, as
    // cameras' buffers do.
    private static ByteBuffer plane(int first, int side, int rowStride, int pixelStride) {
        byte[] bytes = new byte[2 + (side - 1) * (rowStride + pixelStride)];
        for (int i = 0; i < side * side; ++i) {
            bytes[1 + i / side * rowStride + i % side * pixelStride] = (byte) (first + i / side * 10 + i % side);
        }
        return ByteBuffer.wrap(bytes).position(1);
    }

    @Test
    public void programCacheTakesAFolderThatExists() throws IOException {
        File folder = Files.createTempDirectory("korvane").toFile();
        ProgramCache.setDirectory(folder);
        badArgument("directory is null", () -> ProgramCache.setDirectory(null));
        badArgument("No such file", () -> ProgramCache.setDirectory(new File(folder, "absent")));
        File file = new File(folder, "file");
        assertTrue(file.createNewFile());
        badArgument("Not a directory", () -> ProgramCache.setDirectory(file));
        assertTrue(file.delete() && folder.delete());
    }

    @Test
    public void whatIsForgottenIsFreed() throws Exception {
        String log = logOfForgotten(9, () -> {
            for (int i = 0; i < 3; ++i) {
                new Panorama(16, 16, Panorama.Format.NV12, null);
                new Burst(16, 16);
                ExposureAdvisor[] self = new ExposureAdvisor[1];
                self[0] = new ExposureAdvisor(16, 16, (aperture, gain) -> assertNotNull(self[0]));
            }
        });
        for (String name : new String[] {"Panorama", "Burst", "ExposureAdvisor"}) {
            assertEquals(log, 4, log.split("a " + name + " was not closed", -1).length);
        }
    }
}
