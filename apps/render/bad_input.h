#pragma once

#include <ostream>
#include <stdexcept>
#include <string>

namespace norava {

// Something that the user handed in cannot be used. The text is one line, fit to follow the
// program's name and the file's.
class BadInput : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The same for what is to be written.
class OutputError : public BadInput {
  public:
    using BadInput::BadInput;
};

// A full disk is noticed only when the last of it goes there.
inline void RequireWritten(std::ostream& out, const char* name) {
    if (!out.flush()) throw OutputError(std::string(name) + ": cannot be written");
}

}  // namespace norava
