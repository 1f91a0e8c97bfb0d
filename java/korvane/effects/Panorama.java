// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

/**
 * The intake of a panorama sweep: takes the preview's frames with the gyroscope's angles, finds the direction of the
 * sweep, refuses frames that move against it, and says how far the guide on the screen has to move.
 *
 * <p>The first frame only sets the reference angles. Any thread may feed frames, one after the other; the listener is
 * called on that thread. An open sweep keeps one processor core busy and holds a frame or two of width * height * 1.5
 * bytes: open it when the sweep begins and close it at its end.
 */
public final class Panorama implements AutoCloseable {
    /** How the bytes of a frame lie. All have width * height * 3 / 2 of them and begin with the luma. */
    public enum Format {
        /** Chroma in pairs, U first. */
        NV12,
        /** Chroma in pairs, V first; see {@link CameraFrames#nv21}. */
        NV21,
        /** Chroma in planes, V first. */
        YV12
    }

    /** Where a sweep goes. */
    public enum Direction {
        /** Not known yet. */
        NONE,
        /** From left to right. */
        LEFT_TO_RIGHT,
        /** From right to left. */
        RIGHT_TO_LEFT,
        /** From top to bottom. */
        TOP_TO_BOTTOM,
        /** From bottom to top. */
        BOTTOM_TO_TOP
    }

    /** What became of a frame. */
    public enum Result {
        /** It has set the reference angles and is not part of the panorama. */
        REFERENCE,
        /** It is part of the panorama. */
        TAKEN,
        /** It moves against the sweep and is not taken. */
        WRONG_DIRECTION
    }

    /** Follows a sweep. */
    public interface Listener {
        /**
         * A frame has been looked at; not called for the frame that sets the reference.
         *
         * @param result {@link Result#TAKEN} or {@link Result#WRONG_DIRECTION}
         * @param offsetX how far the guide is from its place, in pixels to the right
         * @param offsetY how far the guide is from its place, in pixels down
         * @param direction of the sweep
         */
        void onFrame(Result result, int offsetX, int offsetY, Direction direction);
    }

    private static final int OUT_OF_MEMORY = 1;
    private static final int WRONG_DIRECTION = 2;
    private static final int NO_REFERENCE = 3;

    private final int frameBytes;
    private final Listener listener;
    private final Handle handle;
    private volatile Direction direction = Direction.NONE;

    /**
     * Opens a sweep.
     *
     * @param width of the frames in pixels, at least 1
     * @param height of the frames in pixels, at least 1
     * @param format of the frames
     * @param listener follows the sweep; may be null
     * @throws IllegalArgumentException for an argument that does not fit
     * @throws IllegalStateException when memory is short
     */
    public Panorama(int width, int height, Format format, Listener listener) {
        frameBytes = Checks.frameBytes(width, height, 3);
        Checks.notNull(format, "format");
        this.listener = listener;
        long address = Natives.panoramaOpen(width, height, format.ordinal() + 1);
        handle = new Handle(this, "Panorama", address, Natives::panoramaClose);
    }

    /**
     * Takes one frame.
     *
     * @param frame width * height * 3 / 2 bytes
     * @param gyroX angle in degrees, finite; 0 counts as not measured
     * @param gyroY angle in degrees, finite; 0 counts as not measured
     * @return what became of it
     * @throws IllegalArgumentException for an argument that does not fit
     * @throws IllegalStateException when the sweep is closed or memory is short
     */
    public Result feed(byte[] frame, float gyroX, float gyroY) {
        Checks.frame(frame, frameBytes);
        Checks.finite(gyroX, "gyroX");
        Checks.finite(gyroY, "gyroY");
        int[] answer = new int[3];
        long address = handle.enter();
        try {
            Result result = result(Natives.panoramaFeed(address, frame, gyroX, gyroY, answer));
            direction = Direction.values()[answer[2]];
            if (listener != null && result != Result.REFERENCE) {
                listener.onFrame(result, answer[0], answer[1], direction);
            }
            return result;
        } finally {
            handle.exit();
        }
    }

    private static Result result(int code) {
        switch (code) {
            case OUT_OF_MEMORY:
                throw new IllegalStateException("memory is short");
            case WRONG_DIRECTION:
                return Result.WRONG_DIRECTION;
            case NO_REFERENCE:
                return Result.REFERENCE;
            default:
                return Result.TAKEN;
        }
    }

    /**
     * Where the sweep goes.
     *
     * @return {@link Direction#NONE} until a frame has been taken
     */
    public Direction direction() {
        return direction;
    }

    /**
     * Ends the sweep and frees it. Always returns. Called from within the listener it takes effect when that returns.
     * Closing twice is allowed.
     */
    @Override
    public void close() {
        handle.close();
    }
}
