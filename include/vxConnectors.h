/// \file vxConnectors.h
/// The image graph: an image output of a module and the image inputs that read it.

#ifndef VX_CONNECTORS_H
#define VX_CONNECTORS_H

#include "vxTypes.h"

#include <vector>

namespace vx {

class BaseOp;
class OutputConnector;
class PagedImg;

/// An image input of a module: a link to one output, or none.
///
/// Connecting and disconnecting change nothing but the links: no field is touched and nobody is notified. An input and
/// its output may be destroyed in any order. No function locks; the image graph belongs to one thread at a time.
class VX_EXPORT InputConnector {
 public:
  /// Makes an input without a link. \param op the module, which must outlive the input. \param index number of the
  /// input in the module, not tested.
  InputConnector(BaseOp& op, VXint64 index);
  /// Makes an input and connects it. \param op,index as above. \param output what to connect to.
  InputConnector(BaseOp& op, VXint64 index, OutputConnector& output);

  /// Disconnects.
  virtual ~InputConnector();

  /// Leaves the output that is linked and goes to the end of the links of another one, or of the same one again.
  /// \throw std::bad_alloc without memory; the input is then disconnected.
  void connect(OutputConnector& output);

  /// Leaves the output. Without a link nothing happens.
  void disconnect();

  /// \return the linked output, or null.
  OutputConnector* getLink() const noexcept { return _link; }
  /// \return the module that owns the input.
  BaseOp& getOp() const noexcept { return _op; }
  /// \return the number of the input in its module.
  VXint64 getIndex() const noexcept { return _index; }

  /// \return 1 if the input is linked to an output that has it among its links, else 0. Cost: linear in those links.
  VXint64 isValidConnection() const;

 private:
  friend class OutputConnector;

  // Both only report that they aren't supported; the constructor leaves an input without a link.
  InputConnector(const InputConnector& other);
  InputConnector& operator=(const InputConnector& other);

  BaseOp& _op;
  VXint64 _index;
  OutputConnector* _link;
};

/// An image output of a module: its paged image and the inputs that read it.
///
/// It owns the image and none of the inputs. The rules of InputConnector for fields, lifetime and threads hold.
class VX_EXPORT OutputConnector {
 public:
  /// Makes an output with its image and without links. \param op the module, which must outlive the output.
  /// \param index number of the output in the module, not tested. Failures of the image's constructor pass on.
  OutputConnector(BaseOp& op, VXint64 index);

  /// Disconnects all inputs, the first one first, and destroys the image then.
  virtual ~OutputConnector();

  /// \return the number of links.
  VXint64 getLinkNum() const noexcept { return static_cast<VXint64>(_links.size()); }

  /// \return an input, in order of connection. An index below 0 or not below getLinkNum() is reported as an error with
  ///         ::VX_BAD_INDEX and gives null.
  InputConnector* getLink(VXint64 index) const;

  /// \return the image, which lives as long as the output.
  PagedImg& getPagedImg() const noexcept { return *_pagedImg; }
  /// \return the module that owns the output.
  BaseOp& getOp() const noexcept { return _op; }
  /// \return the number of the output in its module.
  VXint64 getIndex() const noexcept { return _index; }

 private:
  friend class InputConnector;

  // Both only report that they aren't supported; the constructor leaves an output without links, with an own image.
  OutputConnector(const OutputConnector& other);
  OutputConnector& operator=(const OutputConnector& other);

  void _addLink(InputConnector& input);
  VXint64 _removeLink(InputConnector& input);
  VXint64 _isLink(const InputConnector& input) const;

  BaseOp& _op;
  VXint64 _index;
  PagedImg* _pagedImg;  // owned
  std::vector<InputConnector*> _links;
};

}  // namespace vx

#endif
