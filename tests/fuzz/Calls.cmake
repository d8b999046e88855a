# -D EXPORTS=kalvio/exports.txt -D OUTPUTS=...: a line of C++ for every exported function of a class, shared out over the
# sources; what is not public or takes what Calls.h cannot make of bytes is passed over there. Not the indexes, of a
# namespace of their own: their answers hang on what was inserted before, as IndexFuzzer.cpp has it.
cmake_minimum_required(VERSION 3.25)
file(STRINGS "${EXPORTS}" lines REGEX "^[A-Za-z0-9]+::[A-Za-z0-9]+(\\[abi:cxx11\\])?\\([^[]*\\)( const)?$")
set(calls "")
foreach(line IN LISTS lines)
  string(REPLACE "[abi:cxx11]" "" line "${line}")
  string(REPLACE "std::__cxx11::" "std::" line "${line}")
  string(REGEX MATCH "^([A-Za-z0-9]+)::([A-Za-z0-9]+)\\((.*)\\)( const)?$" matched "${line}")
  set(class "${CMAKE_MATCH_1}")
  set(name "${CMAKE_MATCH_2}")
  set(arguments "${CMAKE_MATCH_3}")
  set(kind Changing)
  if(CMAKE_MATCH_4)
    set(kind Asking)
  endif()
  # Constructors, ownership by hand and other pointers, and what the library keeps to itself.
  if(class STREQUAL name OR (arguments MATCHES "\\*" AND NOT arguments STREQUAL "IGeometry const*") OR
     arguments MATCHES "&&|unique_ptr|std::span|detail::|OnPlan|Facet|Locator|Piece|BorderCell|Operand|Turn|Extension|Removal")
    continue()
  endif()
  # What changes a file or a number of all threads, what iterates from where it is told, and what needs as much memory as
  # it is told: samples at steps and parts have their own laws in CallTest.cpp.
  if(name MATCHES "^(Make(Points|Lines|LineString).*|RandomPoints|Resize|SetDimension|SetOver)$" OR
     name MATCHES "^(FindQuadraticFactorsByBairstow|DumpToFile|SetEpsilon|RemoveElements)$")
    continue()
  endif()
  if(arguments)
    set(arguments ", ${arguments}")
  endif()
  list(APPEND calls "    called += Try<${class}, ${kind}${arguments}>(bytes, \"${class}::${name}\", [](auto of) -> \
decltype(of(&decltype(of)::Class::${name})) { return of(&decltype(of)::Class::${name})$<SEMICOLON> })$<SEMICOLON>\n")
endforeach()
list(LENGTH calls count)
list(LENGTH OUTPUTS parts)
math(EXPR size "(${count} + ${parts} - 1) / ${parts}")
foreach(output IN LISTS OUTPUTS)
  list(FIND OUTPUTS "${output}" part)
  math(EXPR from "${part} * ${size}")
  list(SUBLIST calls ${from} ${size} some)
  list(JOIN some "" some)
  string(REPLACE "$<SEMICOLON>" ";" some "${some}")
  file(WRITE "${output}" "#include \"fuzz/Calls.h\"\n\nnamespace Kalvio::Math {\n\n"
    "int CallPart${part}(const Bytes& bytes) {\n    int called = 0;\n${some}    return called;\n}\n\n}\n")
endforeach()
