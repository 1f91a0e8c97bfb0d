// SPDX-License-Identifier: Apache-2.0
package javax.microedition.khronos.opengles;

/** The desktop's stand-in for a type that only passes through. */
public interface GL10 {}
