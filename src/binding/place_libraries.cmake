# Puts libraries into a folder and removes what an earlier build left there, which would ship with the package:
#   cmake -D "LIBRARIES=FILE;FILE;..." -D FOLDER=FOLDER -P place_libraries.cmake
file(GLOB leftovers "${FOLDER}/*.dll")
foreach(library IN LISTS LIBRARIES)
  get_filename_component(name "${library}" NAME)
  list(REMOVE_ITEM leftovers "${FOLDER}/${name}")
  file(COPY_FILE "${library}" "${FOLDER}/${name}" ONLY_IF_DIFFERENT)
endforeach()
if(leftovers)
  file(REMOVE ${leftovers})
endif()
