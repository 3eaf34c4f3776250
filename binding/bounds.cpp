#include "binding/description.h"
#include "lmx/big_int.h"

namespace binding {

const lmx::c_big_int minus_one("-1");
const lmx::c_big_int zero("0");
const lmx::c_big_int one("1");
const lmx::c_big_int twenty("20");
const lmx::c_big_int int32_lowest("-2147483648");
const lmx::c_big_int int32_highest("2147483647");
const lmx::c_big_int uint32_highest("4294967295");
const lmx::c_big_int int64_lowest("-9223372036854775808");
const lmx::c_big_int int64_highest("9223372036854775807");
const lmx::c_big_int uint64_highest("18446744073709551615");

const lmx::s_ns_map reader_ns_map[] = {{}};
const lmx::s_ns_map writer_ns_map[] = {{}};

}  // namespace binding
