#pragma once

namespace parcelory {

/// What the text of a status line is about, so that a view chooses its look without reading the text.
enum class StatusKind {
    none, ///< nothing to read
    progress,
    success,
    failure,
};

} // namespace parcelory
