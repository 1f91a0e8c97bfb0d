// SPDX-License-Identifier: Apache-2.0
import java.io.ByteArrayOutputStream;
import java.io.IOException;

/** Keeps what is written and throws from a given write on; flush throws when told to. */
public class ScriptedOutputStream extends ByteArrayOutputStream {
    private int writesBeforeThrow;
    public int flushes;
    public boolean throwAtFlush;

    public ScriptedOutputStream(int writesBeforeThrow) {
        this.writesBeforeThrow = writesBeforeThrow;
    }

    @Override
    public synchronized void write(byte[] bytes, int offset, int count) {
        if (writesBeforeThrow-- == 0) {
            throw new IllegalStateException("scripted");
        }
        super.write(bytes, offset, count);
    }

    @Override
    public void flush() throws IOException {
        ++flushes;
        if (throwAtFlush) {
            throw new IOException("scripted");
        }
    }
}
