// SPDX-License-Identifier: Apache-2.0
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

/** How wrong use is refused: by an exception of one kind, with a reason in its message. */
class Refusals {
    private static void refused(Class<? extends Exception> kind, String reason, Log.Work work) {
        Exception thrown = assertThrows(reason, kind, work::run);
        assertTrue(thrown.getMessage(), thrown.getMessage().contains(reason));
    }

    static void badArgument(String reason, Log.Work work) {
        refused(IllegalArgumentException.class, reason, work);
    }

    static void badState(String reason, Log.Work work) {
        refused(IllegalStateException.class, reason, work);
    }
}
