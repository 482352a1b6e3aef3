#pragma once

#include "daemon/DaemonPlatform.h"

// The system as it is: this process's environment, disk and standard output.
DaemonPlatform linuxDaemonPlatform();
