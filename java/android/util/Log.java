// SPDX-License-Identifier: Apache-2.0
package android.util;

/** The desktop's stand-in for Android's log: lines on standard error. */
public final class Log {
    private Log() {}

    public static int w(String tag, String message) {
        System.err.println("W/" + tag + ": " + message);
        return 0;
    }

    public static int w(String tag, String message, Throwable cause) {
        return w(tag, message + ": " + cause);
    }
}
