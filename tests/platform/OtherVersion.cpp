// SPDX-License-Identifier: MIT
// What every module begins with, of a program that is not this one.
extern "C" __attribute__((visibility("default"))) const void *strandloomModule()
{
    static const char *const version = "0.0.1";
    return &version;
}
