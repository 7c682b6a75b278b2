#pragma once

#include "platform/Motion.h"
