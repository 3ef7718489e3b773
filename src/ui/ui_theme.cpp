#include "ui/ui_theme.h"
