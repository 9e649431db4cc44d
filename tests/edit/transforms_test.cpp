#include "edit/edit_test_support.h"
