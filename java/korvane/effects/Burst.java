// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

/**
 * Merges the frames of a burst into one picture: the brightest value of each byte for a dark burst, the mean for any
 * other. The first frame decides.
 *
 * <p>Frames are merged on a thread of the burst's own while the next ones are taken. Any thread may push, one after the
 * other. An open burst keeps one processor core busy. It holds the frames not yet merged (width * height * 2 bytes
 * each), and 4 bytes a pixel more for the merge: push frames as the camera delivers them, and merge soon after the last.
 */
public final class Burst implements AutoCloseable {
    private final int frameBytes;
    private final Handle handle;
    private int frames;
    private boolean merged;

    /**
     * Opens a burst.
     *
     * @param width of the frames in pixels, at least 1
     * @param height of the frames in pixels, at least 1
     * @throws IllegalArgumentException for a size that does not fit
     * @throws IllegalStateException when memory is short
     */
    public Burst(int width, int height) {
        frameBytes = Checks.frameBytes(width, height, 4);
        handle = new Handle(this, "Burst", Natives.burstOpen(width, height), Natives::burstClose);
    }

    /**
     * Copies a frame and queues it for merging.
     *
     * @param yuyv width * height * 2 bytes: Y0 U Y1 V, rows without padding; see {@link CameraFrames#yuyv}
     * @throws IllegalArgumentException for a frame that is null or too short
     * @throws IllegalStateException when the burst is merged or closed already, or memory is short
     */
    public void push(byte[] yuyv) {
        Checks.frame(yuyv, frameBytes);
        long address = handle.enter();
        try {
            if (merged) {
                throw new IllegalStateException("this Burst is merged already; open another for more frames");
            }
            Natives.burstPush(address, yuyv);
            ++frames;
        } finally {
            handle.exit();
        }
    }

    /**
     * Waits until all frames are merged, and ends the burst. May be called again for another copy.
     *
     * @return the picture, width * height * 2 bytes in the format of the frames
     * @throws IllegalStateException when no frame was pushed, the burst is closed, or memory is short
     */
    public byte[] merge() {
        long address = handle.enter();
        try {
            if (frames == 0) {
                throw new IllegalStateException("no frame was pushed");
            }
            byte[] picture = new byte[frameBytes];
            if (!Natives.burstMerge(address, frames, picture)) {
                throw new IllegalStateException("no frame could be merged: memory is short");
            }
            merged = true;
            return picture;
        } finally {
            handle.exit();
        }
    }

    /** Ends the burst and frees it. Frames that are not merged are dropped. Closing twice is allowed. */
    @Override
    public void close() {
        handle.close();
    }
}
