// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import java.nio.ByteBuffer;

/**
 * Brings camera frames into the layouts that {@link Panorama}, {@link Burst}, {@link ExposureAdvisor} and {@link
 * TimestampStamp} take.
 *
 * <p>A frame of ImageFormat.YUV_420_888 (CameraX, Camera2, ImageReader) comes as three planes with strides: rows may
 * have padding, and the chroma may be apart or in pairs. These methods read any of them and leave the buffers'
 * positions as they are. Any thread may call them.
 *
 * <pre>{@code
 * ImageProxy.PlaneProxy[] p = image.getPlanes();
 * byte[] frame = CameraFrames.nv21(p[0].getBuffer(), p[0].getRowStride(), p[1].getBuffer(), p[2].getBuffer(),
 *         p[1].getRowStride(), p[1].getPixelStride(), image.getWidth(), image.getHeight());
 * }</pre>
 */
public final class CameraFrames {
    private CameraFrames() {}

    /**
     * An NV21 frame without padding.
     *
     * @param y the luma plane, a byte a pixel
     * @param yRowStride bytes from one luma row to the next
     * @param u the U plane, for two columns and two rows of pixels each
     * @param v the V plane, laid out as the U plane
     * @param chromaRowStride bytes from one chroma row to the next
     * @param chromaPixelStride bytes from one chroma value to the next: 1 or 2
     * @param width in pixels, even
     * @param height in pixels, even
     * @return width * height * 3 / 2 bytes: the luma, then V and U in pairs
     * @throws IllegalArgumentException for a null or too small buffer, and for a stride or size that does not fit
     */
    public static byte[] nv21(ByteBuffer y, int yRowStride, ByteBuffer u, ByteBuffer v, int chromaRowStride,
            int chromaPixelStride, int width, int height) {
        byte[] out = new byte[checkedBytes(width, height, 3)];
        Planes in = new Planes(y, yRowStride, u, v, chromaRowStride, chromaPixelStride, width, height);
        int at = 0;
        for (int row = 0; row < height; ++row) {
            System.arraycopy(in.luma.read(row), 0, out, at, width);
            at += width;
        }
        for (int row = 0; row < height / 2; ++row) {
            byte[] blue = in.blue.read(row);
            byte[] red = in.red.read(row);
            for (int x = 0; x < width / 2; ++x) {
                out[at++] = red[x];
                out[at++] = blue[x];
            }
        }
        return out;
    }

    /**
     * A YUYV frame without padding. Two rows share their chroma.
     *
     * @param y the luma plane, a byte a pixel
     * @param yRowStride bytes from one luma row to the next
     * @param u the U plane, for two columns and two rows of pixels each
     * @param v the V plane, laid out as the U plane
     * @param chromaRowStride bytes from one chroma row to the next
     * @param chromaPixelStride bytes from one chroma value to the next: 1 or 2
     * @param width in pixels, even
     * @param height in pixels, even
     * @return width * height * 2 bytes: Y0 U Y1 V
     * @throws IllegalArgumentException for a null or too small buffer, and for a stride or size that does not fit
     */
    public static byte[] yuyv(ByteBuffer y, int yRowStride, ByteBuffer u, ByteBuffer v, int chromaRowStride,
            int chromaPixelStride, int width, int height) {
        byte[] out = new byte[checkedBytes(width, height, 4)];
        Planes in = new Planes(y, yRowStride, u, v, chromaRowStride, chromaPixelStride, width, height);
        int at = 0;
        for (int pair = 0; pair < height / 2; ++pair) {
            byte[] blue = in.blue.read(pair);
            byte[] red = in.red.read(pair);
            for (int row = 2 * pair; row < 2 * pair + 2; ++row) {
                byte[] luma = in.luma.read(row);
                for (int x = 0; x < width / 2; ++x) {
                    out[at++] = luma[2 * x];
                    out[at++] = blue[x];
                    out[at++] = luma[2 * x + 1];
                    out[at++] = red[x];
                }
            }
        }
        return out;
    }

    private static int checkedBytes(int width, int height, int bytesForTwoPixels) {
        int bytes = Checks.frameBytes(width, height, bytesForTwoPixels);
        if (width % 2 != 0 || height % 2 != 0) {
            throw new IllegalArgumentException("width and height must be even, not " + width + " x " + height);
        }
        return bytes;
    }

    private static final class Planes {
        final Plane luma;
        final Plane blue;
        final Plane red;

        Planes(ByteBuffer y, int yRowStride, ByteBuffer u, ByteBuffer v, int chromaRowStride, int chromaPixelStride,
                int width, int height) {
            luma = new Plane(y, "y", yRowStride, 1, width, height);
            blue = new Plane(u, "u", chromaRowStride, chromaPixelStride, width / 2, height / 2);
            red = new Plane(v, "v", chromaRowStride, chromaPixelStride, width / 2, height / 2);
        }
    }

    private static final class Plane {
        private final ByteBuffer bytes;
        private final int start;
        private final int rowStride;
        private final int pixelStride;
        private final byte[] line;
        private final byte[] values;

        Plane(ByteBuffer buffer, String name, int rowStride, int pixelStride, int width, int height) {
            bytes = Checks.notNull(buffer, name).duplicate();
            start = bytes.position();
            this.rowStride = rowStride;
            this.pixelStride = Checks.inRange(pixelStride, 1, 2, "pixel stride of " + name);
            // The last value of a row has nothing behind it; cameras leave that out in the last row.
            int rowBytes = (width - 1) * pixelStride + 1;
            Checks.inRange(rowStride, rowBytes, Integer.MAX_VALUE, "row stride of " + name);
            long needed = (height - 1L) * rowStride + rowBytes;
            if (bytes.remaining() < needed) {
                throw new IllegalArgumentException(
                        name + " has " + bytes.remaining() + " bytes; it must have " + needed);
            }
            line = new byte[rowBytes];
            values = new byte[width];
        }

        /** The values of a row, in an array that the next read changes. */
        byte[] read(int row) {
            bytes.position(start + row * rowStride);
            bytes.get(line);
            for (int x = 0; x < values.length; ++x) {
                values[x] = line[x * pixelStride];
            }
            return values;
        }
    }
}
