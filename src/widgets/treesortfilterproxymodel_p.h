#pragma once

namespace TreeFilter {

/// From so many groups in one another on, verdicts are kept, as no test may go down much further.
constexpr int deepNesting = 50;

} // namespace TreeFilter
