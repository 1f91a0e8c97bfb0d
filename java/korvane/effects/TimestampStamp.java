// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

/**
 * Stamps a date and time into the bottom right corner of a camera frame, in white digits whose size follows the frame.
 *
 * <p>May run on any thread, several at a time on different frames.
 */
public final class TimestampStamp {
    private static final String CHARACTERS = "0123456789:- ";

    private TimestampStamp() {}

    /**
     * Stamps a text into a frame.
     *
     * @param yuyv the frame, at least width * height * 2 bytes: Y0 U Y1 V, rows without padding; see {@link
     *     CameraFrames#yuyv}
     * @param width in pixels, at least 1
     * @param height in pixels, at least 1
     * @param text digits, ":", "-" and blanks, at least one
     * @return whether the frame has changed; a text that is too long for the frame leaves it as it was
     * @throws IllegalArgumentException for an argument that does not fit
     * @throws IllegalStateException when memory is short
     */
    public static boolean stamp(byte[] yuyv, int width, int height, String text) {
        Checks.frame(yuyv, Checks.frameBytes(width, height, 4));
        Checks.notNull(text, "text");
        if (text.isEmpty()) {
            throw new IllegalArgumentException("text is empty");
        }
        for (int i = 0; i < text.length(); ++i) {
            if (CHARACTERS.indexOf(text.charAt(i)) < 0) {
                throw new IllegalArgumentException(
                        "text has '" + text.charAt(i) + "'; only digits, ':', '-' and blanks can be stamped");
            }
        }
        return Natives.stamp(yuyv, width, height, text);
    }
}
