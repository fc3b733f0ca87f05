# A tree planted for the include check to fail on: three classes of one room include each other
# in a ring, and no two of them include each other directly.
set(TP_ROOMS foundation editor)
set(TP_ROOM_USES_foundation "")
set(TP_ROOM_USES_editor foundation)
