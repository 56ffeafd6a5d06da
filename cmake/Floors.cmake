# The floors of the house, lowest first: a file includes only from its own floor or from one below.
# The targets and the include check read them from here.
set(PHOTRAK_FLOORS platform base numeric drawing plotting kernel files results hierarchy models workbench)
# Rooms of a floor, as FLOOR/ROOM. A room sees itself and those named for it; files that lie on the
# floor itself see all rooms.
set(PHOTRAK_ROOMS models/common models/sources models/optical models/detection
  apps/photrak apps/workbench_script apps/qt apps/vistrax apps/workbench)
set(PHOTRAK_ROOM_models/sources_SEES models/common)
set(PHOTRAK_ROOM_models/optical_SEES models/common)
set(PHOTRAK_ROOM_models/detection_SEES models/common)
# Programs see no other program; those with windows share one room.
set(PHOTRAK_ROOM_apps/vistrax_SEES apps/qt)
set(PHOTRAK_ROOM_apps/workbench_SEES apps/qt)
