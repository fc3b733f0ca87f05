# The rooms of the app and which rooms each may use: arrows point down only. The build reads
# this table when it links a room, and the include check (tests/architecture) reads it for
# every #include of every file.
set(TP_ROOMS foundation engine platform editing editor scripts settings app)
set(TP_ROOM_USES_foundation "")
set(TP_ROOM_USES_engine foundation)
set(TP_ROOM_USES_platform foundation)
set(TP_ROOM_USES_editing "")
set(TP_ROOM_USES_editor editing engine platform foundation)
set(TP_ROOM_USES_scripts editor editing engine platform foundation)
set(TP_ROOM_USES_settings engine platform foundation)
set(TP_ROOM_USES_app scripts editor settings engine platform foundation)
