#pragma once

// The limits every exchange with the engine runs under, read by the API that promises them
// and by the session that sets them on libcurl.
namespace TPEngineLimits {
// Both the idle limit and the whole-request limit.
inline constexpr int TimeoutMs = 5000;
} // namespace TPEngineLimits
