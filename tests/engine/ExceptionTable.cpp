#include "ExceptionTable.h"

namespace vx::test {

namespace {

// Where module code without a guard of its own is met by that of the request.
const Outcome codeReachesTheTile{theCode, theCode, {{VX_ERROR, theCode, "Host::_getTileCore( ) on module R", caught}}};
const Outcome otherReachesTheTile{VX_UNINITIALIZED_RESULT,
                                  VX_UNINITIALIZED_RESULT,
                                  {{VX_FATAL, VX_UNINITIALIZED_RESULT, "Module R called by Host::_getTileCore()",
                                    "Returning uninitialized memory."}}};
const Outcome passes{passesOn, passesOn, {}};

// Where module code is met by the guard of a group of pages.
const Outcome codeReachesTheGroup{
    theCode, theCode, {failedGroups, {VX_ERROR, theCode, "Host::_processPagesHelper() on module R", caught}}};
const Outcome otherReachesTheGroup{
    VX_UNKNOWN_EXCEPTION,
    VX_UNKNOWN_EXCEPTION,
    {failedGroups, {VX_FATAL, VX_UNKNOWN_EXCEPTION, "Module R called by Host::getTile()", "Ignoring function call."}}};
const Outcome passesThroughGroups{passesOn, passesOn, {failedGroups}};

// How a module wants its inputs is asked under a guard that reports and throws on.
const Outcome codeFromInputs{theCode,
                             theCode,
                             {{VX_ERROR, theCode, "Host::_initializePageData( ) on module T", caught},
                              failedGroups,
                              {VX_ERROR, theCode, "Host::_processPagesHelper() on module R", caught}}};
const Outcome otherFromInputs{
    VX_UNKNOWN_EXCEPTION,
    VX_UNKNOWN_EXCEPTION,
    {{VX_FATAL, VX_IN_SUBIMAGE_CALCULATION_FAILED, "T::calcInSubImageProps/Box()", ""},
     failedGroups,
     {VX_FATAL, VX_UNKNOWN_EXCEPTION, "Module R called by Host::getTile()", "Ignoring function call."}}};

// A page is calculated under a guard that keeps a code for the end of the run, and forgets everything else.
const Outcome codeFromPage{theCode,
                           theCode,
                           {{VX_ERROR, theCode, "Host::_calcPagesMT( ) on module T", caught},
                            failedGroupsAfterPages,
                            {VX_ERROR, theCode, "Host::_processPagesHelper() on module R", caught}}};
const Outcome otherFromPage{
    VX_RESULT_OK,
    VX_RESULT_OK,
    {{VX_FATAL, VX_PAGE_CALCULATION_FAILED, "T::calcOutSubImage()", "Continuing with other pages."}}};
const Outcome passesFromPage{passesOn, passesOn, {fatal41, failedGroups}};

// Properties: the module's own image keeps the code; images behind it are invalid because an input is.
const Outcome codeFromProperties{
    theCode, VX_IMAGE_NOT_CALCULATED, {{VX_ERROR, theCode, "Host::_updateImageProps( ) on module T", caught}}};
const Outcome otherFromProperties{VX_PROPERTY_CALCULATION_FAILED,
                                  VX_IMAGE_NOT_CALCULATED,
                                  {{VX_FATAL, VX_PROPERTY_CALCULATION_FAILED, "T::calcOutImageProps()", ""}}};

// Only the requested module is told that pages are about to be calculated.
Outcome onlyHere(Outcome outcome) {
  outcome.resultAbove = VX_RESULT_OK;
  return outcome;
}
const Outcome codeReachesTheWalk{
    theCode, VX_RESULT_OK, {{VX_ERROR, theCode, "Host::processAllPages( ) on module R", caught}}};

// A touch has no result.
const Outcome codeFromNotificationWhenOn{VX_RESULT_OK,
                                         VX_RESULT_OK,
                                         {{VX_FATAL, theCode, "BaseOp::handleNotification() of module T",
                                           "Continuing after broken handleNotification call."}}};
const Outcome codeFromNotificationWhenOff{VX_RESULT_OK,
                                          VX_RESULT_OK,
                                          {{VX_ERROR, theCode, "BaseOp::handleNotification() of module T",
                                            "Controlled but undesired exception caught - continuing operation."}}};
const Outcome otherFromNotification{VX_RESULT_OK,
                                    VX_RESULT_OK,
                                    {{VX_FATAL, VX_UNKNOWN_EXCEPTION, "BaseOp::handleNotification() of module T",
                                      "Continuing after broken handleNotification call."}}};

// A code is caught in both modes, everything else only while exception handling is on.
ExceptionRow row(Operation operation, Request request, const Outcome& code, const Outcome& otherWhenOn,
                 const Outcome& otherWhenOff, Pages pages) {
  return {operation, request, code, code, otherWhenOn, otherWhenOff, pages};
}

}  // namespace

const std::vector<ExceptionRow>& exceptionTable() {
  using enum Operation;
  using enum Request;
  static const std::vector<ExceptionRow> rows = {
      // The property update inside a tile request.
      row(handleInput, newTile, codeReachesTheTile, otherReachesTheTile, passes, Pages::none),
      row(setMarker, newTile, codeReachesTheTile, otherReachesTheTile, passes, Pages::none),
      row(getMarker, newTile, codeReachesTheTile, otherReachesTheTile, passes, Pages::none),
      row(calcInSubImageProps, newTile, codeReachesTheTile, otherReachesTheTile, passes, Pages::none),
      row(calcOutImageProps, newTile, codeFromProperties, otherFromProperties, passes, Pages::none),
      // The property update by itself.
      row(handleInput, properties, passes, passes, passes, Pages::none),
      row(setMarker, properties, passes, passes, passes, Pages::none),
      row(getMarker, properties, passes, passes, passes, Pages::none),
      row(calcInSubImageProps, properties, passes, passes, passes, Pages::none),
      row(calcOutImageProps, properties, codeFromProperties, otherFromProperties, passes, Pages::none),
      // The pages of a tile.
      row(notifyFirst, tile, onlyHere(codeReachesTheTile), onlyHere(otherReachesTheTile), onlyHere(passes),
          Pages::none),
      row(handleInput, tile, codeReachesTheGroup, otherReachesTheGroup, passesThroughGroups, Pages::first),
      row(calcInSubImageBox, tile, codeFromInputs, otherFromInputs, passesThroughGroups, Pages::first),
      row(calcInSubImageProps, tile, codeFromInputs, otherFromInputs, passesThroughGroups, Pages::first),
      row(calcOutSubImage, tile, codeFromPage, otherFromPage, passesFromPage, Pages::allThere),
      // All pages.
      row(notifyFirst, allPages, codeReachesTheWalk, onlyHere(otherReachesTheTile), onlyHere(passes), Pages::none),
      row(calcInSubImageBox, allPages, codeFromInputs, otherFromInputs, passesThroughGroups, Pages::first),
      row(calcOutSubImage, allPages, codeFromPage, otherFromPage, passesFromPage, Pages::allThere),
      // A change of the source.
      {handleNotification,
       touch,
       codeFromNotificationWhenOn,
       codeFromNotificationWhenOff,
       otherFromNotification,
       {passesOn, passesOn, {silencedFields}},
       Pages::none},
  };
  return rows;
}

}  // namespace vx::test
