// The integer 2-D filter kernels that the entries try before the generic
// loop: tier e9's column-group frames, tier e9's pixel-block design for narrow
// C1 images, and the row-pair design of every tier. Each takes the entry's
// call and returns true when it wrote the whole region, false when it
// declined, before writing anything.
#pragma once

#include "filter/int_column_group.h"
#include "filter/int_pixel_block.h"
#include "filter/int_row_pair.h"
