// bench/windows/QtLoop.h
//
// What both dialogs in Qt begin with.
#pragma once

/// Makes the process's one QApplication at the first call; it outlives its windows.
void StartQt();
