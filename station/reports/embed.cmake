# Turns the template into C++: cmake -DTEMPLATE=... -DOUTPUT=... -P embed.cmake
file(READ ${TEMPLATE} text)
file(WRITE ${OUTPUT} "#include \"report_template.h\"\n\nconst char *const reports::report_template = R\"~~~~(${text})~~~~\";\n")
