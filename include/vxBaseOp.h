/// \file vxBaseOp.h
/// The base class of all modules.

#ifndef VX_BASE_OP_H
#define VX_BASE_OP_H

#include "vxBase.h"
#include "vxFieldContainer.h"
#include "vxInSubImageProps.h"
#include "vxScaleShiftData.h"
#include "vxSubImg.h"
#include "vxSubImgBox.h"
#include "vxThreadInfo.h"
#include "vxTypeInfos.h"
#include "vxVector.h"

#include <string>
#include <vector>

namespace vx {

class CachedBuffer;
class Host;
class PagedImg;

/// An image-processing module: image inputs, image outputs and fields, and the operations by which the host calculates
/// the outputs.
///
/// A module derives from this class, tells the number of its inputs and outputs in the constructor, adds fields, and
/// overrides the operations it needs:
///
/// - calcOutImageProps() says what an output image is: extent, page extent, voxel type, range of values.
/// - calcInSubImageBox() says which region of an input a page of an output needs, calcInSubImageProps() how it wants
/// it.
/// - calcOutSubImage() calculates a page from these regions.
/// - handleNotification() reacts to changes of fields, handleInput() says what to do with an open or invalid input.
///
/// In place of an operation that is not overridden, an image is passed through from the inputs.
///
/// Failures of an operation are thrown as error codes, plain `int`. Inputs and outputs are counted from 0.
///
/// The module owns its fields and, by them, its connectors and output images. It may be destroyed before or after the
/// modules that it is connected to. All live modules stand in a list of the process.
///
/// Threads: everything belongs to the thread that requests tiles, but for calcOutSubImage(), which runs on several
/// threads at once, for different pages, in a module that says so by setThreadSupport(). Fields don't notify while
/// images are calculated.
class VX_EXPORT BaseOp : public Base {
 public:
  /// Which voxel types a module takes and gives.
  enum PERMITTED_TYPES : int {
    ONLY_STANDARD_TYPES = 0,    ///< The standard types.
    STANDARD_TYPES_NARROW = 1,  ///< Types with the operations of the standard types.
    EXPLICIT_TYPES = 2,         ///< Types with the properties that the module names.
    SCALAR_TYPES_ONLY = 3       ///< Types with the least set of operations on single values.
  };
  /// Whether pages of a module may be calculated on several threads at once.
  enum THREAD_SUPPORT : int {
    NO_THREAD_SUPPORT = 0,  ///< Only on the requesting thread.
    THREAD_SUPPORTED = 1    ///< On several threads; any other value but 0 means the same.
  };
  /// Why a module is asked about an input.
  enum INPUT_STATE : int {
    INPUT_NOT_CONNECTED = 0,  ///< The input is open.
    INPUT_NOT_VALID = 1       ///< The image of the input is not up to date.
  };
  /// What a module does about such an input.
  enum INPUT_HANDLE : int {
    INVALIDATE_OUTPUT = 0,  ///< The outputs are invalid too.
    USE_PLACEHOLDER = 1     ///< The image of DummyOp stands in.
  };

  /// Makes a module with connector fields "input0", "input1", ... and "output0", "output1", ..., in this order, and a
  /// text field "instanceName" after them, and enters it in the list of modules.
  /// \param numInputs,numOutputs number of image inputs and outputs; a negative one counts as 0.
  BaseOp(int numInputs, int numOutputs);

  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and makes a module without inputs and outputs.
  BaseOp(const BaseOp& other);
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  BaseOp& operator=(const BaseOp& other);

  /// Takes the module from the list of modules and destroys its fields and images.
  ~BaseOp() override;

  VX_ABSTRACT_CLASS_HEADER(BaseOp)

  /// \name Operations of a module
  /// The host calls them. Their order is part of the interface of module libraries.
  ///@{

  /// Decides on an open or invalid input. It must be constant, or it overrides nothing. \param inIndex the input.
  /// \param state what is wrong with it. \return what to do; any value but #INVALIDATE_OUTPUT takes the placeholder.
  virtual INPUT_HANDLE handleInput(int inIndex, INPUT_STATE state) const;
  /// Sets the properties of an output image, getOutImg(). On entry they are a copy of those of input 0, as far as there
  /// is one, and the image is up to date. PagedImg::setOutOfDate() declares it invalid.
  virtual void calcOutImageProps(int outIndex);
  /// Determines the region of an input that a page needs. It may be called without a tile request too.
  /// \param inIndex the input. \param outIndex the output. \param outSubImgBox region of the page, which may reach past
  /// the image. \return the region, `outSubImgBox` here. It may reach past the input; voxels there are undefined. An
  /// empty region requests nothing.
  virtual SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& outSubImgBox, int outIndex);
  /// Calculates a page. The default calls the operation without thread information. Override one of the two.
  /// \param outSubImg the page to be written. \param outIndex the output, -1 where pages are only walked through.
  /// \param inSubImgs one block for each input, in the order of the inputs. \param threadInfo what thread this is.
  virtual void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs, ThreadInfo& threadInfo);
  /// The same. The default copies the input of the output's index, or the last one if there are fewer; a module without
  /// inputs leaves the page as it is. \throw int ::VX_BAD_POINTER, after a fatal report, for null blocks.
  virtual void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs);
  /// Says how an input shall be delivered. It is called also when image properties are determined.
  /// \param inIndex the input. \param outIndex the output. \param props the wishes, preset to what the module gets
  /// without asking.
  virtual void calcInSubImageProps(int inIndex, InSubImageProps& props, int outIndex);
  /// Runs calcOutSubImage() over all pages, see Host::processAllPages().
  /// \param outIndex the output, \param inIndex or the input whose pages are walked through; the other one is -1.
  /// \param box region, empty for the whole image. \return 0 or an error code.
  virtual int processAllPages(int outIndex, int inIndex, SubImgBox box);
  /// Reacts to the change of a field. \param field the field that notified, one of the module.
  virtual void handleNotification(Field* field);
  /// Lets all fields notify again.
  virtual void activateAttachments();
  /// Keeps all fields from notifying.
  virtual void deactivateAttachments();
  /// Called before the fields are saved.
  virtual void beginSaveFields();
  /// Called after the fields have been saved.
  virtual void endSaveFields();
  /// Called once before the first page is calculated after the pages of an output have been cleared.
  /// \param outIndex the output, -1 without one. \param isProcessAllPages whether the pages are walked through.
  virtual void notifyFirstCalcOutSubImage(int outIndex, bool isProcessAllPages);
  /// Marks the module while a walk through the network is in it. \param marker any number.
  virtual void setMarker(int marker);
  /// \return the mark, 0 at first.
  virtual int getMarker();
  ///@}

  /// \name Fields
  ///@{

  /// \return the fields of the module, which live as long as the module.
  FieldContainer* getFieldContainer() noexcept { return &_fieldContainer; }
  /// \copydoc getFieldContainer()
  const FieldContainer* getConstFieldContainer() const noexcept { return &_fieldContainer; }

  /// \param addInstanceName whether the text of the field "instanceName" follows in brackets, unless it is empty.
  /// \return the name of the module's class. \throw int ::VX_BAD_POINTER, after a fatal report, if that field is
  /// missing.
  std::string whoAmI(bool addInstanceName) const;

  /// Says whether a notification may reach the module while it handles one. At first it may not: it is dropped.
  void permitRecursiveHandleNotifications(bool permit) noexcept { _recursiveHandleNotificationsPermitted = permit; }
  /// \return whether it may.
  bool areRecursiveHandleNotificationsPermitted() const noexcept { return _recursiveHandleNotificationsPermitted; }
  /// \return the number of notifications that the module is handling.
  VXint64 getHandleNotificationEntryCounter() const noexcept { return _handleNotificationEntryCounter; }
  /// Keeps notifications from handleNotification(). Calls nest: each one takes a call of handleNotificationOn() back.
  void handleNotificationOff() noexcept { --_handleNotificationOnCounter; }
  /// Takes back one call of handleNotificationOff().
  void handleNotificationOn() noexcept { ++_handleNotificationOnCounter; }
  /// \return whether handleNotification() is called.
  bool isHandleNotificationOn() const noexcept { return _handleNotificationOnCounter >= 0; }

  /// The callback of all fields: hands the notification on to handleNotification(). What that throws is reported and
  /// goes no further, but for exceptions that are no error code while VXIsExceptionHandlingEnabled() is false.
  /// \param op the module; null is ignored. \param sensor sensor of the field. \throw int ::VX_BAD_POINTER, after a
  /// fatal report, for a null sensor.
  static void handleSensorNotification(void* op, void* sensor);
  ///@}

  /// \name Inputs and outputs
  ///@{

  /// \return the number of image inputs.
  VXint64 getInputNum() const noexcept { return _fieldContainer.getNumInputConnectorFields(); }
  /// \return the number of image outputs.
  VXint64 getOutputNum() const noexcept { return _fieldContainer.getNumOutputConnectorFields(); }
  /// \return the field of an input; see FieldContainer::getInputConnectorField() for a bad index.
  InputConnectorField* getInField(VXint64 inIndex) const { return _fieldContainer.getInputConnectorField(inIndex); }
  /// \return the field of an output; see FieldContainer::getOutputConnectorField() for a bad index.
  OutputConnectorField* getOutField(VXint64 outIndex) const {
    return _fieldContainer.getOutputConnectorField(outIndex);
  }
  /// \return the image of an output, which lives as long as the module; null for a bad index.
  PagedImg* getOutImg(VXint64 outIndex) const;

  /// Finds what an input gets its image from. Each result pointer may be null.
  /// \param op the module. \param inIndex the input. \param getReal true for what is connected; false for what the
  /// module sees, where handleInput() decides on an open or invalid input. \param valid whether an image is there and
  /// may be used; with `getReal`, whether the input is connected. \param inOp,inImg,inOpIndex the module, the image and
  /// the output of that module; null, null and -1 without one. \throw int ::VX_BAD_POINTER, after a fatal report, for a
  /// bad index.
  static void getInInfos(const BaseOp& op, VXint64 inIndex, bool getReal, bool* valid, BaseOp** inOp, PagedImg** inImg,
                         VXint64* inOpIndex);
  /// The same. \param op the module; null as a bad index. \param inIndex,getReal,valid,inOp,inImg,inOpIndex as above.
  static void getInInfos(const BaseOp* op, VXint64 inIndex, bool getReal, bool* valid, BaseOp** inOp, PagedImg** inImg,
                         VXint64* inOpIndex);
  /// \return the module of getInInfos(), or null.
  BaseOp* getInOp(VXint64 inIndex, bool getReal) const;
  /// \return the output's index of getInInfos(), or -1.
  VXint64 getInOpIndex(VXint64 inIndex, bool getReal) const;
  /// \return the image of getInInfos(), or null.
  PagedImg* getInImg(VXint64 inIndex, bool getReal) const;

  /// Brings the image of an input up to date. \param inIndex the input. \param getReal as for getInInfos().
  /// \return the image, or null if it isn't valid or the index is bad. Without `getReal` the placeholder may stand in.
  PagedImg* getUpdatedInImg(VXint64 inIndex, bool getReal) const;
  /// \return the image of an input, brought up to date; null if it isn't valid or only the placeholder stands in.
  PagedImg* getNonDummyUpdatedInImg(int inIndex) const;

  /// Connects an input to an output and attaches the output's field to that of the input.
  /// \param inIndex the input. \param op module of the output. \param outIndex the output. A bad index is reported as
  /// an error with ::VX_BAD_INPUT_INDEX or ::VX_BAD_OUTPUT_INDEX. \return 1, or 0 if nothing was connected.
  int connectInput(VXint64 inIndex, BaseOp& op, VXint64 outIndex);

  /// Drops all pages and the memory image of an output and declares its image out of date; nobody is notified.
  /// \throw int ::VX_BAD_POINTER, after a fatal report, for a bad index.
  void clearOutImg(VXint64 outIndex);
  ///@}

  /// \name Processing controls
  /// What a module permits the host to do. A bad index is reported with ::VX_BAD_OUTPUT_INDEX and changes nothing; a
  /// query answers -1 to it, or false.
  ///@{

  /// Permits the block of an input to lie in the memory of the output's page, where region and type are equal.
  /// \param outIndex the output. \param inIndex the input, -1 for none.
  void setOutImgInplace(VXint64 outIndex, VXint64 inIndex);
  /// Takes the permission back.
  void unsetOutImgInplace(VXint64 outIndex);
  /// \return the input, or -1; nothing is reported.
  VXint64 getOutImgInplace(VXint64 outIndex) const;
  /// Lets the pages of an input stand in for those of an output that would be the same. \param outIndex the output.
  /// \param inIndex the input, -1 for none. Extent, page extent and type of both images must be equal, or the output is
  /// invalid.
  void setBypass(VXint64 outIndex, VXint64 inIndex);
  /// \return the input, or -1; nothing is reported.
  VXint64 getBypass(VXint64 outIndex) const;
  /// Takes the memory image of an output under the module's control, or gives it back to the library.
  void setMemoryOutputControl(VXint64 outIndex, bool manualControl);
  /// \return whether the memory image is under the module's control.
  bool getMemoryOutputControl(VXint64 outIndex) const;

  /// Says whether pages may be calculated on several threads at once.
  void setThreadSupport(THREAD_SUPPORT threadSupport) noexcept { _threadSupport = threadSupport; }
  /// \return what was said.
  THREAD_SUPPORT getThreadSupport() const noexcept { return _threadSupport; }

  /// Promises that the module doesn't write into its input blocks, nor clears the pages of its inputs while it
  /// calculates. Where a block is just one page of the input, as it is, it then lies in that page and no copy is made.
  /// At first nothing is promised. An input that is delivered in place is not meant: it lies in the output's page,
  /// which is the module's to write. \param areReadOnly whether that holds for all inputs, in all calculations from now
  /// on.
  void setInputsReadOnly(bool areReadOnly) noexcept { _areInputsReadOnly = areReadOnly; }
  /// \return whether it was promised.
  bool areInputsReadOnly() const noexcept { return _areInputsReadOnly; }

  /// Says which voxel types the module takes and gives; an output or an input block of any other makes the output
  /// invalid. At first these are the standard types.
  /// \param permitted stored as it is; an invalid one is reported as an error with ::VX_BAD_PARAMETER and requires what
  /// #ONLY_STANDARD_TYPES requires. \param bits the properties that a type must have, for #EXPLICIT_TYPES.
  void setVoxelDataTypeSupport(PERMITTED_TYPES permitted, VXTypePropBits bits = VXTypePropBits());
  /// \return what was said.
  PERMITTED_TYPES getVoxelDataTypeSupport() const noexcept { return _voxelDataTypeSupport; }
  /// \return the properties that a type must have.
  const VXTypePropBits& getVoxelDataTypeRequirements() const noexcept { return _voxelDataTypeRequirements; }
  ///@}

  /// \name Services of the default host
  ///@{

  /// Requests a tile: the voxels of a region of an output, see Host::getTile().
  /// \param op the module; null gives ::VX_BAD_MODULE_POINTER. \param outIndex the output. \param box region; voxels
  /// past the image are not written. \param dataType type of the tile's voxels. \param data pointer to the memory, or
  /// to null for a tile that goes back through freeTile(). \param scaleShift mapping of the values. \return 0 or an
  /// error code.
  static int getTile(BaseOp* op, VXint64 outIndex, const SubImgBox& box, int dataType, void** data,
                     const ScaleShiftData& scaleShift = ScaleShiftData());
  /// The same. \param op,outIndex,scaleShift as above. \param subImg gives region, type and memory; without memory a
  /// tile is allocated for it.
  static int getTile(BaseOp* op, VXint64 outIndex, SubImg& subImg, const ScaleShiftData& scaleShift = ScaleShiftData());
  /// The same. \param op,outIndex,box,dataType,scaleShift as above. \param cachedBuffer takes the tile.
  static int getTile(BaseOp* op, VXint64 outIndex, const SubImgBox& box, int dataType, CachedBuffer& cachedBuffer,
                     const ScaleShiftData& scaleShift = ScaleShiftData());
  /// Frees a tile. \param data the tile, or null.
  static void freeTile(void* data);
  /// Brings an output image up to date, see Host::updateImageProps(). \param op the module; null gives
  /// ::VX_BAD_MODULE_POINTER. \param outIndex the output. \return 0 if the image is valid, else an error code.
  static int updateImageProps(BaseOp* op, VXint64 outIndex);
  /// Tells the application how far a calculation is. \param info1,info2 texts to be shown.
  static void updateProgress(const char* info1, const char* info2);
  /// \return whether the application wants the calculation to stop. A module asks this in a long calcOutSubImage(); it
  ///         may be called from any thread.
  static bool shouldTerminate();
  /// \return the trigger that was pressed during a calculation, or null.
  static Field* getPressedNotifyField();

  /// Gives the text of one voxel. \param op the module. \param outIndex the output. \param position the voxel.
  /// \param errorCode takes 0 or an error code; may be null. \param errorResult what is returned where the voxel can't
  /// be had. \return the text; an empty one, with ::VX_BAD_PAGE_ID, for a position outside of the image.
  static std::string getVoxelValueAsString(BaseOp& op, VXint64 outIndex, const TVector<VXint64>& position,
                                           int* errorCode, const std::string& errorResult);

  /// Chooses a page extent, see BaseOpTools::adaptPageExt().
  static void adaptPageExt(TVector<VXint64>& pageExt, int dataType, const TVector<VXint64>& imgExt,
                           const TVector<VXint64>& preferredExt, const TVector<VXint64>& stepExt,
                           const TVector<VXint64>& minExt, const TVector<VXint64>& maxExt);
  ///@}

  /// \name The list of all modules
  ///@{

  /// \return the number of live modules.
  static VXint64 getNumBaseOps();
  /// \return a module, in order of creation; null for an index that is out of range.
  static BaseOp* getBaseOp(unsigned int index);
  /// \return the index of a module, -1 if it isn't in the list. Cost: linear in the number of modules.
  static VXint64 findBaseOpIndex(const BaseOp& op);
  /// Empties the list, at shutdown. The modules live on.
  static void destroyBaseOp();
  ///@}

 protected:
  /// Appends a module to the list and notifies 0x200002. \return true.
  static bool _addBaseOp(BaseOp& op);
  /// Takes a module from the list and notifies 0x200004. \return its index, -1 if it wasn't there.
  static VXint64 _removeBaseOp(BaseOp& op);

  static std::vector<BaseOp*>* _instantiatedModules;  ///< All live modules in order of creation, or null.
  static VXint64 _globalHandleNotificationDepth;      ///< Nesting depth of notifications across all modules.

  FieldContainer _fieldContainer;                               ///< All fields of the module.
  THREAD_SUPPORT _threadSupport = NO_THREAD_SUPPORT;            ///< Any value but 0 permits worker threads.
  VXint64 _handleNotificationEntryCounter = 0;                  ///< Notifications that the module is handling.
  bool _recursiveHandleNotificationsPermitted = false;          ///< Whether a notification may reach it meanwhile.
  VXint64 _marker = 0;                                          ///< Not 0 while the update of properties is in it.
  PERMITTED_TYPES _voxelDataTypeSupport = ONLY_STANDARD_TYPES;  ///< Declared class of voxel types.
  VXTypePropBits _voxelDataTypeRequirements;                    ///< Properties that a voxel type must have.
  VXint64 _handleNotificationOnCounter = 0;                     ///< Notifications are delivered from 0 on.

 private:
  friend class State;

  // Whether an index is that of an input or an output.
  bool _isInput(VXint64 inIndex) const noexcept { return inIndex >= 0 && inIndex < getInputNum(); }
  bool _isOutput(VXint64 outIndex) const noexcept { return outIndex >= 0 && outIndex < getOutputNum(); }
  // Calls handleNotification() as the setting for exceptions says.
  void _guardedHandleNotification(Field* field);

  bool _areInputsReadOnly = false;
};

}  // namespace vx

#endif
