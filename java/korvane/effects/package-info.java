// SPDX-License-Identifier: Apache-2.0
/**
 * Photo and camera effects: blurs, GPU filters for pictures and camera frames, panorama intake, burst merging, exposure
 * advice, timestamps and palettes.
 *
 * <p>A wrong argument raises an IllegalArgumentException, a call at the wrong time or on the wrong thread an
 * IllegalStateException, both with the reason. What holds native memory is AutoCloseable; what is forgotten is freed
 * when the garbage collector finds it, with a line in the log.
 */
package korvane.effects;
