// The document fixture moved to the shared test helpers; kept for the tests that include it here.
#pragma once

#include "support/DocumentTest.h"
