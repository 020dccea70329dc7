#pragma once

#include <stdexcept>

namespace velmorant::review {

// A gallery that cannot be reviewed or accepted as given: the message names
// the folder or file and what is wrong with it.
class BadInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace velmorant::review
