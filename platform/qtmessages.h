#pragma once

// Qt's own diagnostics are for developers: the programs a person runs
// (mctask, mcsim) show their own messages only. MCTASK_QT_MESSAGES=1 lets
// Qt's through; fatal ones always pass.
void installQuietQtMessages();
