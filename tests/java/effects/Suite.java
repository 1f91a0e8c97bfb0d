// SPDX-License-Identifier: Apache-2.0
import org.junit.runner.JUnitCore;
import org.junit.runner.Result;
import org.junit.runner.notification.Failure;

/** Runs the tests of a class for a test program. */
public final class Suite {
    private Suite() {}

    /** Nothing when all have passed; else what has failed. */
    public static String run(String className) throws ClassNotFoundException {
        Result result = JUnitCore.runClasses(Class.forName(className));
        StringBuilder text = new StringBuilder(result.getRunCount() == 0 ? "no tests in " + className : "");
        for (Failure failure : result.getFailures()) {
            text.append(failure.getTestHeader()).append(": ").append(failure.getTrace());
        }
        return text.toString();
    }
}
