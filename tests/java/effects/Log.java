// SPDX-License-Identifier: Apache-2.0
import java.io.ByteArrayOutputStream;
import java.io.PrintStream;

/** What tests see of the process from outside. */
final class Log {
    interface Work {
        void run() throws Exception;
    }

    private Log() {}

    /** The log lines of some work, once there are as many with a text as there must be, or after ten seconds. */
    static String of(Work work, int lines, String text) throws Exception {
        PrintStream standard = System.err;
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        System.setErr(new PrintStream(bytes, true));
        try {
            work.run();
            for (int i = 0; i < 100 && bytes.toString().split(text, -1).length <= lines; ++i) {
                System.gc();
                Thread.sleep(100);
            }
        } finally {
            System.setErr(standard);
        }
        return bytes.toString();
    }
}
