// What the Java streams do when a call into Java threw. Internal.
#ifndef KORVANE_FRAMEWORKS_IO_JAVA_EXCEPTION_H_
#define KORVANE_FRAMEWORKS_IO_JAVA_EXCEPTION_H_

#include <jni.h>

// True if an exception was pending: it is described, cleared, and `line` goes to the log.
bool clear_java_exception(JNIEnv* env, const char* line);

#endif  // KORVANE_FRAMEWORKS_IO_JAVA_EXCEPTION_H_
