#include "demo/DemoJournal.h"
