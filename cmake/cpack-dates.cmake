# CPack runs this script before it packs a folder. If SOURCE_DATE_EPOCH is set, every file gets this date, so that a
# package has the same bytes whenever it is built.

if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -exec touch -h -d @$ENV{SOURCE_DATE_EPOCH} {} +
    COMMAND_ERROR_IS_FATAL ANY)
endif()
