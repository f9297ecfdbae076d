# Before cpack packs: signs the project's programs. The libraries stay as their makers left them.
file(GLOB programs "${CPACK_TEMPORARY_DIRECTORY}/*.exe")
execute_process(COMMAND "${CPACK_CAMERA_SIGN}" ${programs} COMMAND_ERROR_IS_FATAL ANY)
