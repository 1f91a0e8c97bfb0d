// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

/** Which point of a camera texture lies at each corner of the screen. */
final class TextureCorners {
    // In strip order: bottom left, bottom right, top left, top right.
    private static final float[] CORNERS = {0, 0, 1, 0, 0, 1, 1, 1};

    private TextureCorners() {}

    /**
     * Fills the view with the frame's middle: what sticks out at two sides is cut off.
     *
     * @param matrix of the SurfaceTexture: 16 values in columns, from corners of the picture to points of the texture
     * @param frameWidth size of the frame in the camera's buffer
     * @param degrees how far the picture is turned clockwise: 0, 90, 180 or 270
     */
    static float[] of(float[] matrix, int frameWidth, int frameHeight, int viewWidth, int viewHeight, int degrees) {
        boolean isTurnedByMatrix = Math.abs(matrix[0]) < Math.abs(matrix[1]);
        boolean isTurned = isTurnedByMatrix != (degrees % 180 != 0);
        double pictureWidth = isTurned ? frameHeight : frameWidth;
        double pictureHeight = isTurned ? frameWidth : frameHeight;
        // How much of the picture shows, across and down.
        double ratio = pictureWidth * viewHeight / (pictureHeight * viewWidth);
        double across = ratio > 1 ? 1 / ratio : 1;
        double down = ratio > 1 ? 1 : ratio;

        float[] points = new float[8];
        for (int i = 0; i < 8; i += 2) {
            double x = (CORNERS[i] - 0.5) * across;
            double y = (CORNERS[i + 1] - 0.5) * down;
            for (int turns = degrees / 90; turns > 0; --turns) {
                double turned = -y;
                y = x;
                x = turned;
            }
            x += 0.5;
            y += 0.5;
            points[i] = (float) (matrix[0] * x + matrix[4] * y + matrix[12]);
            points[i + 1] = (float) (matrix[1] * x + matrix[5] * y + matrix[13]);
        }
        return points;
    }
}
