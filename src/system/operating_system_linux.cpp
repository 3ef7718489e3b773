#include "system/operating_system.h"
