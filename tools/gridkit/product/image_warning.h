#pragma once

#include <string>

// One line on standard error when the image files of an open product disagree with its annotation,
// naming the gravest disagreement and how many more there are. Only headers are read. Products of
// other formats, whose file is no annotation, are passed over.
void warn_about_images(const std::string& annotation);
