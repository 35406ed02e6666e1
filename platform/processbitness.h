#pragma once

// Whether this process is a 32-bit program running on a 64-bit system (its
// registry reads then need an explicit view to reach 64-bit settings).
bool isWow64Process();
