// Topology files (.top): a whole workspace as text, and the definition file (.dts) of a SuperBlock.
#pragma once

#include "files/superblock_file.h"
#include "files/topology_load.h"
#include "files/topology_save.h"
