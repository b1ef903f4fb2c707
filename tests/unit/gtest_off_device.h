// Included ahead of GoogleTest's sources where they are built for Android: they would put their
// temporary files where only a device has a folder.
#include <gtest/internal/gtest-port-arch.h>
#undef GTEST_OS_LINUX_ANDROID
