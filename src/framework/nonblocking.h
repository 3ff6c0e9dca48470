#pragma once

// Marks a function that the audio thread runs: it takes no lock, allocates nothing and makes no
// system call. Compilers that know the attribute check it (the rtsan build does so at run time);
// elsewhere it says the same to the reader. Stands after the parameter list: void Render()
// NORAVA_NONBLOCKING;
#if defined(__has_cpp_attribute)
#if __has_cpp_attribute(clang::nonblocking)
#define NORAVA_NONBLOCKING [[clang::nonblocking]]
#endif
#endif
#ifndef NORAVA_NONBLOCKING
#define NORAVA_NONBLOCKING
#endif
