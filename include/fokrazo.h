/// The whole public interface; the same as <fokrazo/fokrazo.h>.
#pragma once

#include <fokrazo/fokrazo.h>
