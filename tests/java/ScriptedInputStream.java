// SPDX-License-Identifier: Apache-2.0
import java.io.IOException;
import java.io.InputStream;

/**
 * Delivers 0, 1, 2 ... in chunks of at most a given size, throws from the call that it is told to, and may claim to
 * have read more than it has.
 */
public class ScriptedInputStream extends InputStream {
    public final int length;
    public final int chunk;
    public int position;
    public int calls;
    public int throwAtCall = -1;
    public boolean throwAlways;
    public long longestSkip = Long.MAX_VALUE;
    public int claimedExtra;

    public ScriptedInputStream(int length, int chunk) {
        this.length = length;
        this.chunk = chunk;
    }

    private void count() throws IOException {
        if (throwAlways || calls++ == throwAtCall) {
            throw new IOException("scripted");
        }
    }

    @Override
    public int read() {
        throw new UnsupportedOperationException();
    }

    @Override
    public int read(byte[] bytes, int offset, int count) throws IOException {
        count();
        if (position == length) {
            return -1;
        }
        int delivered = Math.min(Math.min(count, chunk), length - position);
        for (int i = 0; i < delivered; ++i) {
            bytes[offset + i] = (byte) position++;
        }
        return delivered + claimedExtra;
    }

    @Override
    public long skip(long count) throws IOException {
        count();
        if (longestSkip < 0) {
            return longestSkip;
        }
        long skipped = Math.min(Math.min(count, longestSkip), length - position);
        position += (int) skipped;
        return skipped;
    }

    @Override
    public int available() throws IOException {
        count();
        return length - position;
    }
}
