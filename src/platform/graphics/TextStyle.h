#pragma once

namespace velmorant::platform {

// Where the lines of a text block sit across its rectangle.
enum class TextAlignment { Left, Centre, Right };

}  // namespace velmorant::platform
