#pragma once

#include <string>
#include <vector>

// Where the image files of an open product disagree with its annotation, one line each, the gravest
// first. Only headers are read. None for products of other formats, whose file is no annotation.
std::vector<std::string> image_disagreements(const std::string& annotation);

// One line on standard error about them: the gravest, and how many more there are.
void warn_about_images(const std::string& annotation);
void warn_about_images(const std::vector<std::string>& disagreements);

// The same, ahead of reading layers: throws gridkit::Error where an image's samples are of a type
// that makes every pixel of its layers wrong, such as half-precision floats.
void check_images_to_read(const std::string& annotation);
