# Makes documentation of what the headers hold as comments (for doxygen docs/Doxyfile).
# Copying and moving are described where the class is.
/(\(|operator=\()(const )?[A-Za-z]+ ?&&?( other)?\)( noexcept)?( = (default|delete))?;/d
/^ +class [A-Z_ ]*Impl;$/d
# The plain headers: a comment before a name, one behind a name, and one about the file.
1s#^/\*+ #/**\n * @file\n * #
s|^/\*$|/**|
s|^/\* (.*)$|/** \1|
s|^( *[^ /*].*[,;{0-9a-zA-Z]) +/\* (.*\*/)$|\1 /**< \2|
