/// \file vxFields.h
/// All classes of fields, one for each type of value.

#ifndef VX_FIELDS_H
#define VX_FIELDS_H

#include "vxBoolField.h"
#include "vxColorField.h"
#include "vxConnectorFields.h"
#include "vxDicomTagListField.h"
#include "vxDoubleField.h"
#include "vxEnumField.h"
#include "vxFloatField.h"
#include "vxIntField.h"
#include "vxMatrixField.h"
#include "vxNotifyField.h"
#include "vxPointerFields.h"
#include "vxStringField.h"
#include "vxSubImgBoxFields.h"
#include "vxUniversalTypeField.h"
#include "vxVXDataTypeField.h"
#include "vxVecFields.h"
#include "vxVectorField.h"

#endif
