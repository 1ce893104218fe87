// What the support library needs of those above it: where its faults are reported.
#pragma once

/// Codes of faults that the support library detects in what its callers give it.
inline constexpr int kFaultNoString = 11;
inline constexpr int kFaultBadIdent = 12;

/// Called with the code of a fault and a number that belongs to it. Until the diagnostics set their own,
/// a plain line on standard error.
extern void (*gSupportFault)(int code, long information);
