# Fails when a folder includes a header of a folder that it must not know, and when a folder with
# sources is not in the plan: cmake -DROOT=... -P this file.
cmake_minimum_required(VERSION 3.25)

# folder(F [G...]): sources in F may include headers of F itself and of the folders G. Headers from
# outside of the plan's folders (the toolkit, libraries) are not checked.
set(folders)
macro(folder name)
  list(APPEND folders ${name})
  set(known_${name} ${name} ${ARGN})
endmacro()

# What a host promises, and what plug-ins share.
folder(host/detail host)
folder(host host/detail)
folder(include host host/detail)

set(contract host include)
folder(structure-editor/names)
folder(structure-editor/radius)
folder(structure-editor/data ${contract} structure-editor/names structure-editor/radius)
folder(structure-editor/tree ${contract} structure-editor/data)
folder(structure-editor/window ${contract} structure-editor/names structure-editor/radius
  structure-editor/data structure-editor/tree)

# Numerics and rendering know no items.
folder(view/render)
folder(view/ribbon view/render)
folder(view/scene ${contract} view/render view/ribbon)
folder(view/window ${contract} view/render view/ribbon view/scene)

folder(companions/solid-volume/mesh)
folder(companions/solid-volume ${contract} companions/solid-volume/mesh)
folder(companions/electrostatics/potential)
folder(companions/electrostatics ${contract} companions/electrostatics/potential)
folder(companions/rotamer/sidechain)
folder(companions/rotamer ${contract} companions/rotamer/sidechain)

folder(memory-host/items host)
folder(memory-host/history host memory-host/items)
folder(memory-host/files host memory-host/items)
folder(memory-host/journal host memory-host/items memory-host/files)
folder(memory-host/services host memory-host/items memory-host/files)
folder(workbench ${contract} memory-host/items memory-host/history memory-host/files memory-host/journal
  memory-host/services)

# The contract's tests run against any host: only tests/support/MemoryHostUnderTest.cpp knows which.
folder(tests/host-contract ${contract} tests/support)

# The plain model knows nothing of what it is compared with.
folder(tests/support/plain)

# Include directories as the compiler gets them, for headers not beside the including file.
set(roots host include structure-editor view memory-host workbench
  companions/solid-volume companions/electrostatics companions/rotamer tests/support tests/host-contract
  tests/memory-host tests/structure-editor tests/view tests/random-use)

# The path below ROOT of the header that `file` includes as `path`; empty when it is none of ours.
function(find_header file path into)
  get_filename_component(here ${file} DIRECTORY)
  set(${into} "" PARENT_SCOPE)
  foreach(place ${here} ${roots})
    if(EXISTS ${ROOT}/${place}/${path})
      file(REAL_PATH ${ROOT}/${place}/${path} found)
      file(RELATIVE_PATH found ${real_root} ${found})
      set(${into} ${found} PARENT_SCOPE)
      return()
    endif()
  endforeach()
endfunction()

file(REAL_PATH ${ROOT} real_root)
foreach(folder ${folders})
  file(GLOB files RELATIVE ${ROOT} ${ROOT}/${folder}/*.cpp ${ROOT}/${folder}/*.h)
  foreach(file ${files})
    file(STRINGS ${ROOT}/${file} lines REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<]")
    foreach(line ${lines})
      string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*[\"<]([^\">]*)[\">].*" "\\1" path "${line}")
      find_header(${file} "${path}" header)
      get_filename_component(other "${header}" DIRECTORY)
      if(header AND NOT other IN_LIST known_${folder})
        message(SEND_ERROR "${file} includes ${header}: ${folder}/ must not know ${other}/")
      endif()
    endforeach()
  endforeach()
endforeach()

foreach(room host include structure-editor view companions memory-host workbench tests/host-contract)
  file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/${room}/*.cpp ${ROOT}/${room}/*.h)
  foreach(file ${files})
    get_filename_component(folder ${file} DIRECTORY)
    if(NOT folder IN_LIST folders)
      message(SEND_ERROR "${file}: the plan in CheckRooms.cmake does not know ${folder}/")
    endif()
  endforeach()
endforeach()
