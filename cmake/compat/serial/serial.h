#include <serial.h>
