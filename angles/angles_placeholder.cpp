// Replaced by the angle sources.
