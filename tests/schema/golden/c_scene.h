// Made by schema/generate.py from the tables in schema/level1Product; do not edit.
#pragma once

#include "schema/class_parts.h"
#include "level1bProduct40/source_tag.h"

namespace version40 {

// scene, in schema 4.0
class ANNOTATION_API c_scene {
 public:
#include "c_scene/c_point.inc"

  c_scene();
  c_scene(const c_scene& a_other);
  c_scene& operator=(const c_scene& a_other);
  void swap(c_scene& a_other);
  void reset();
  bool is_occurs_ok() const;
  lmx::elmx_error marshal(lmx::c_xml_writer& a_writer, const char* a_element_name) const;
  lmx::elmx_error unmarshal(lmx::c_xml_reader& a_reader, const std::string& a_element_name);
  c_scene(const char* a_file_name, lmx::elmx_error* a_error);
  c_scene(const char* a_data, std::size_t a_length, lmx::elmx_error* a_error);
  c_scene(const std::string& a_xml_text, lmx::elmx_error* a_error);
  lmx::elmx_error unmarshal(const char* a_file_name);
  lmx::elmx_error unmarshal(const char* a_data, std::size_t a_length);
  lmx::elmx_error unmarshal(const std::string& a_xml_text);
  lmx::elmx_error unmarshal(lmx::c_xml_reader& a_reader);
  lmx::elmx_error marshal(const char* a_file_name) const;
  lmx::elmx_error marshal(std::string* a_text) const;
  lmx::elmx_error marshal(std::ostream& a_stream) const;
  virtual ~c_scene();

  // attribute name: string, 1, at most 20 characters
  const std::string& get_name() const { return m_name.value; }
  lmx::elmx_error set_name(const std::string& a_value) { return m_name.set(a_value); }

  // element look: string, 0..1, values of look
  const std::string& get_look() const { return m_look.value; }
  lmx::elmx_error set_look(const std::string& a_value) { return m_look.set(a_value); }
  elmx_enums getenum_look() const {
    return static_cast<elmx_enums>(binding::number_of(value_sets::look, m_look.value));
  }
  bool setenum_look(elmx_enums a_value) {
    return binding::set_number(m_look, value_sets::look, a_value);
  }
  bool isset_look() const { return m_look.is_set; }
  void unset_look() { m_look.is_set = false; }

  // element point: c_point, 1..4
  std::size_t size_point() const { return m_point.size(); }
  const c_point& get_point(std::size_t a_index) const {
    return m_point.get(a_index, "a_index < m_point.size()", source_tag);
  }
  c_point& get_point(std::size_t a_index) { return m_point.grow(a_index, source_tag); }
  c_point& assign_point(std::size_t a_index, const c_point& a_value) {
    return get_point(a_index) = a_value;
  }
  lmx::elmx_error append_point() { return m_point.append(); }
  lmx::elmx_error insert_point(std::size_t a_index) { return m_point.insert(a_index); }
  void delete_point(std::size_t a_index) {
    m_point.remove(a_index, "a_index < m_point.size()", source_tag);
  }
  void clear_point() { m_point.clear(); }
  c_point& back_point() { return m_point.back("!m_point.empty()", source_tag); }

  // element height: float, 1, -90 to 90
  float get_height() const { return m_height.value; }
  lmx::elmx_error set_height(float a_value) { return m_height.set(a_value); }

  // What the engine knows of the class.
  static const binding::ClassDescription s_description;

 protected:
  void marshal_attributes(lmx::c_xml_writer& a_writer) const;
  lmx::elmx_error marshal_child_elements(lmx::c_xml_writer& a_writer) const;
  bool unmarshal_attributes(lmx::c_xml_reader& a_reader, const std::string& a_name,
      lmx::elmx_error* a_error);
  lmx::elmx_error unmarshal_attributes_check(lmx::c_xml_reader& a_reader);
  bool unmarshal_body(lmx::c_xml_reader& a_reader, std::string* a_name, lmx::elmx_error* a_error);

 private:
  void init();
  void release();
  static const binding::Member s_members[];

  binding::Held<std::string> m_name;
  binding::Held<std::string> m_look;
  binding::ObjectList<c_point, 4> m_point;
  binding::Held<float> m_height;
};

}  // namespace version40
