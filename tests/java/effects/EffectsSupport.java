// SPDX-License-Identifier: Apache-2.0
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import org.junit.runner.JUnitCore;
import org.junit.runner.Result;
import org.junit.runner.notification.Failure;

/** Runs the tests, and says how wrong use is refused and what the log tells. */
class EffectsSupport {
    interface Work {
        void run() throws Exception;
    }

    /** Runs the tests of a class. Nothing when all have passed; else what has failed. */
    static String run(String className) throws ClassNotFoundException {
        Result result = JUnitCore.runClasses(Class.forName(className));
        StringBuilder text = new StringBuilder(result.getRunCount() == 0 ? "no tests in " + className : "");
        for (Failure failure : result.getFailures()) {
            text.append(failure.getTestHeader()).append(": ").append(failure.getTrace());
        }
        return text.toString();
    }

    private static void refused(Class<? extends Exception> kind, String reason, Work work) {
        Exception thrown = assertThrows(reason, kind, work::run);
        assertTrue(thrown.getMessage(), thrown.getMessage().contains(reason));
    }

    static void badArgument(String reason, Work work) {
        refused(IllegalArgumentException.class, reason, work);
    }

    static void badState(String reason, Work work) {
        refused(IllegalStateException.class, reason, work);
    }

    /** The log of some work, once it says that as many objects were not closed, or after ten seconds. */
    static String logOfForgotten(int objects, Work work) throws Exception {
        PrintStream standard = System.err;
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        System.setErr(new PrintStream(bytes, true));
        try {
            work.run();
            for (int i = 0; i < 100 && bytes.toString().split("was not closed", -1).length <= objects; ++i) {
                System.gc();
                Thread.sleep(100);
            }
        } finally {
            System.setErr(standard);
        }
        return bytes.toString();
    }
}
