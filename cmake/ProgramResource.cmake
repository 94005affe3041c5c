# What Windows shows of a program's file, from the product's settings.

# The spellings of a text in a resource script and in a manifest.
function(emberwake_spell variable text)
  string(REPLACE "\\" "\\\\" rc "${text}")
  string(REPLACE "\"" "\"\"" rc "${rc}")
  set(${variable}_rc "${rc}" PARENT_SCOPE)
  string(REPLACE "&" "&amp;" xml "${text}")
  string(REPLACE "<" "&lt;" xml "${xml}")
  set(${variable}_xml "${xml}" PARENT_SCOPE)
endfunction()

# emberwake_program_resource(TARGET FILE DESCRIPTION MANIFEST [ICON]): gives the program its version
# resource and the manifest MANIFEST.in, and with ICON the product's icon. FILE is its name without
# ".exe".
function(emberwake_program_resource target file description manifest)
  string(REPLACE "." "," version_numbers "${emberwake_product_version},0")
  foreach(each NAME PUBLISHER COPYRIGHT)
    emberwake_spell(product_${each} "${EMBERWAKE_PRODUCT_${each}}")
  endforeach()
  emberwake_spell(description "${description}")
  emberwake_spell(icon "${emberwake_product_icon}")
  set(icon_line "")
  if("ICON" IN_LIST ARGN)
    set(icon_line "1 ICON \"${icon_rc}\"")
  endif()
  set(script "${PROJECT_BINARY_DIR}/${target}.rc")
  configure_file("${PROJECT_SOURCE_DIR}/${manifest}.in" "${PROJECT_BINARY_DIR}/${manifest}" @ONLY)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/program.rc.in" "${script}" @ONLY)
  target_sources(${target} PRIVATE "${script}")
  set_source_files_properties("${script}" PROPERTIES
    OBJECT_DEPENDS "${PROJECT_BINARY_DIR}/${manifest};${emberwake_product_icon}")
endfunction()

# For package.sh and the installer: the product's settings, in the spelling of each.
function(emberwake_write_product_files)
  string(REPLACE "&" "&&" name_in_windows "${EMBERWAKE_PRODUCT_NAME}")
  foreach(each product.nsh product.txt)
    configure_file("${PROJECT_SOURCE_DIR}/packaging/windows/${each}.in"
      "${PROJECT_BINARY_DIR}/packaging/${each}" @ONLY)
  endforeach()
endfunction()
