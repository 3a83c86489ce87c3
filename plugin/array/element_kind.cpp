// array/element_kind.cpp: the table of dtype names

#include "array/element_kind.hpp"

namespace arrayfold {

// The only initialiser at load that is the module's own.
const std::unordered_map<std::string, ElementKind> dtype_table = {
    {XTBool::dtype, XTBool::code},   {XTInt::dtype, XTInt::code},       {XTInt64::dtype, XTInt64::code},
    {XTFloat::dtype, XTFloat::code}, {XTDouble::dtype, XTDouble::code},
};

}  // namespace arrayfold
