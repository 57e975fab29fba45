# Read by CPack before it packs: the same sources give the same bytes, whenever that is done.
execute_process(
  COMMAND find ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
    -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
  COMMAND_ERROR_IS_FATAL ANY)
