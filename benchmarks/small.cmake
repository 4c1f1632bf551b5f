# Runs every work on few atoms, and checks the output.
set(plots ${CMAKE_CURRENT_BINARY_DIR}/small.svg)
file(REMOVE ${plots})
execute_process(COMMAND ${PROGRAM} --plots=${plots} ${STRUCTURES} 0
  OUTPUT_VARIABLE table ERROR_VARIABLE progress RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${progress}the benchmarks ended with ${result}")
endif()
file(READ ${plots} picture)
foreach(work "opening the file" "saving the edited structure"
    "saving the structure from its items"
    "saving with every tenth bond deleted" "longest piece of gathering the journal" "writing the journal" "filling the tree" "commUpdate()" "Any w/ rad." "union by"
    "intersection by" "difference by" "Clear" "Invert" "Full groups" "Atoms by type" "Hide" "Show"
    "Set color" "Color by Temp" "Default color" "Colour Atoms by Residue" "Next Model" "Atom"
    "Bond" "Residue" "picture of points" "picture of spheres" "picture of sticks"
    "picture of ribbons" "click on an atom of spheres" "click on an atom of ribbons"
    "longest pause of the view of spheres" "longest pause of the view of ribbons"
    "solvent-excluded surface" "solvent-accessible surface" "van der Waals surface"
    "solvent-accessible area" "van der Waals area"
    "the view of spheres follows" "the view of ribbons follows" "find @CA" "find within 5 of" "Rotamers"
    "charges of atoms at pH 7" "Coulomb potential on the excluded surface")
  foreach(text "${table}" "${picture}")
    string(FIND "${text}" "${work}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "\"${work}\" is missing in:\n${text}")
    endif()
  endforeach()
endforeach()
foreach(text "contour of 1jzv at 1 sigma" "contour of 1jzv at 2.5 sigma" "contour of a made map"
    "the opened structure, bonds included" "the filled tree"
    "the view with its picture of spheres" "the view with its picture of ribbons")
  string(FIND "${table}" "${text}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "\"${text}\" is missing in:\n${table}")
  endif()
endforeach()
if(NOT picture MATCHES "</svg>\n$")
  message(FATAL_ERROR "the picture is not whole:\n${picture}")
endif()
