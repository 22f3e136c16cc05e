#pragma once

namespace desk {

/// How a text is meant; the screen gives it a colour.
enum class Tone { PLAIN, FAINT, UP, DOWN, WARNING };

/// That of a difference: up above 0, down below.
inline Tone toneOf(double difference) {
    return difference > 0 ? Tone::UP : difference < 0 ? Tone::DOWN : Tone::PLAIN;
}

}  // namespace desk
