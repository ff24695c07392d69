// tests/ui/DialogMemory.h
//
// What information dialogs leave behind, to the byte. Under the sanitizers, which count for
// themselves, all counts are 0.
#pragma once

#include "tests/support/CountedMemory.h"
#include "tests/ui/InfoDialogFixture.h"

long BytesOfString(const std::string& text);

/// Opens a dialog and disposes of it, so many times, and answers what stays behind besides what is
/// meant to: its eight texts, and the event of its end, which whoever is told of it holds. Here that
/// is given back; `ofTexts` receives what one dialog's texts take.
CountedMemory LeftByDialogs(CTestManager& manager, int dialogs, CountedMemory& ofTexts);
