// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import android.util.Log;
import java.lang.ref.PhantomReference;
import java.lang.ref.ReferenceQueue;
import java.util.Set;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.locks.ReentrantLock;

/**
 * The address of a native object. Calls come one at a time; after closing there are none. An owner that is collected
 * without having closed its handle is reported in the log and the native object freed, on a thread of this class.
 */
final class Handle extends PhantomReference<Object> {
    /** Frees the native object. */
    interface Destroyer {
        void destroy(long address);
    }

    private static final String TAG = "korvane";
    private static final ReferenceQueue<Object> FORGOTTEN = new ReferenceQueue<>();

    // A reference that is collected itself is never queued.
    private static final Set<Handle> OPEN = ConcurrentHashMap.newKeySet();

    static {
        Thread net = new Thread(Handle::freeForgotten, "korvane-net");
        net.setDaemon(true);
        net.start();
    }

    private final String name;
    private final Destroyer destroyer;
    private final ReentrantLock lock = new ReentrantLock();
    private long address;
    private int calls;
    private boolean closed;

    Handle(Object owner, String name, long address, Destroyer destroyer) {
        super(owner, FORGOTTEN);
        this.name = name;
        this.address = address;
        this.destroyer = destroyer;
        OPEN.add(this);
    }

    /** Begins a call; every enter() has its exit(). */
    long enter() {
        lock.lock();
        if (closed) {
            lock.unlock();
            throw new IllegalStateException("this " + name + " is closed");
        }
        ++calls;
        return address;
    }

    void exit() {
        --calls;
        destroyIfDone();
        lock.unlock();
    }

    /** Frees the native object, when called from within one of its calls at the end of that. */
    void close() {
        lock.lock();
        closed = true;
        destroyIfDone();
        lock.unlock();
    }

    private void destroyIfDone() {
        if (closed && calls == 0 && address != 0) {
            long last = address;
            address = 0;
            OPEN.remove(this);
            clear();
            destroyer.destroy(last);
        }
    }

    private static void freeForgotten() {
        while (true) {
            try {
                Handle handle = (Handle) FORGOTTEN.remove();
                Log.w(TAG, "a " + handle.name + " was not closed; its memory is freed now. Call close() when done.");
                handle.close();
            } catch (InterruptedException | RuntimeException e) {
                Log.w(TAG, "freeing what was not closed", e);
            }
        }
    }
}
