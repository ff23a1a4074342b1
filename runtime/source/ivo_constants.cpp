// The library's own copies of the constants, of which the shared ones serve the whole process.
#include <ivo/constants.h>
