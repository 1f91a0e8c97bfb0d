// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import java.io.File;

/**
 * Where compiled GPU programs are kept, so that filters open faster at the app's next start.
 *
 * <p>Call this once, before the first filter is opened:
 *
 * <pre>{@code
 * ProgramCache.setDirectory(context.getCodeCacheDir());
 * }</pre>
 *
 * <p>Android empties that folder when the app or the system is updated, and with it programs that a new driver would
 * refuse. Without this call programs are looked for in a folder that apps cannot write, and so compiled at every start.
 */
public final class ProgramCache {
    private ProgramCache() {}

    /**
     * Sets the folder of the cache. May be called at any time from any thread; filters opened later use it. One process
     * should use one folder.
     *
     * @param directory an existing folder that the app may write
     * @throws IllegalArgumentException when it is null, missing, no folder or not writable; the old one stays then
     */
    public static void setDirectory(File directory) {
        Checks.notNull(directory, "directory");
        String reason = Natives.setProgramCacheDirectory(directory.getPath());
        if (reason != null) {
            throw new IllegalArgumentException("directory " + directory + ": " + reason);
        }
    }
}
