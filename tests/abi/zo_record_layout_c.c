#include "zo_record_layout.h"
