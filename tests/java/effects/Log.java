// SPDX-License-Identifier: Apache-2.0
import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.util.Collections;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;

/** What tests see of the process from outside: its log, and its memory. */
final class Log {
    private static final int THREADS = 4;

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

    /** Bytes that native code has taken and not given back. Java's own heap is not among them. */
    static native long allocated();

    /** The same after several threads have each done some work so many times. */
    static long allocatedAfter(Work work, int times) throws Exception {
        Callable<Void> repeated = () -> {
            for (int i = 0; i < times; ++i) {
                work.run();
            }
            return null;
        };
        ExecutorService threads = Executors.newFixedThreadPool(THREADS);
        for (Future<Void> thread : threads.invokeAll(Collections.nCopies(THREADS, repeated))) {
            thread.get();
        }
        threads.shutdown();
        return allocated();
    }
}
