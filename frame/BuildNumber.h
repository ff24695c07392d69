// frame/BuildNumber.h
//
// Reads a build number out of a date as the compiler writes it.
#ifndef FRAME_BUILDNUMBER_H
#define FRAME_BUILDNUMBER_H

#include <stdint.h>

/// Answers year * 10000 + month * 100 + day of a date such as "Mar 11 2011", the year being its
/// last two digits; 0 for a text of fewer than 11 characters. An unknown month counts as 0.
uint32_t BuildNumberOfDate(const char* date);

#endif
