#pragma once

#include <stdexcept>

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

}  // namespace norava
