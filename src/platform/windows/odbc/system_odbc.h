// ODBC's own headers. Behind windows_api.h its names stand for the wide calls.
#pragma once

#include "platform/windows/windows_api.h"

// They need what windows.h brings.
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
