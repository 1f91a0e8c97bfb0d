// SPDX-License-Identifier: Apache-2.0
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.UncheckedIOException;

/**
 * Delivers 0, 1, 2 ... in chunks of at most a given size, throws from the call that it is told to, and may claim to
 * have read more than it has.
 */
public class ScriptedInputStream extends ByteArrayInputStream {
    public final int chunk;
    public int calls;
    public int throwAtCall = -1;
    public boolean throwAlways;
    public long longestSkip = Long.MAX_VALUE;
    public int claimedExtra;

    public ScriptedInputStream(int length, int chunk) {
        super(new byte[length]);
        this.chunk = chunk;
        for (int i = 0; i < length; ++i) {
            buf[i] = (byte) i;
        }
    }

    private void count() {
        if (throwAlways || calls++ == throwAtCall) {
            throw new UncheckedIOException(new IOException("scripted"));
        }
    }

    @Override
    public synchronized int read(byte[] bytes, int offset, int length) {
        count();
        int delivered = super.read(bytes, offset, Math.min(length, chunk));
        return delivered < 0 ? delivered : delivered + claimedExtra;
    }

    @Override
    public synchronized long skip(long length) {
        count();
        return longestSkip < 0 ? longestSkip : super.skip(Math.min(length, longestSkip));
    }

    @Override
    public synchronized int available() {
        count();
        return super.available();
    }
}
