#pragma once
// Contract. Callback objects: the owner allocates, keeps and deletes them; whoever calls back never does. A callback
// may delete its owner or its caller, so after Dispatch a caller touches nothing it isn't sure of.

template <class T>
class ZnCallback {
 public:
  ZnCallback() = default;
  ZnCallback(const ZnCallback&) = delete;
  ZnCallback& operator=(const ZnCallback&) = delete;
  virtual ~ZnCallback() = default;
  virtual void Dispatch(T value) = 0;
};

// Calls object->method(this, value).
template <class T, class C>
class ZnSimpleCallback : public ZnCallback<T> {
 public:
  using Method = void (C::*)(ZnCallback<T>*, T);
  ZnSimpleCallback(C* object, Method method) : object_(object), method_(method) {}
  void Dispatch(T value) override { (object_->*method_)(this, value); }

 private:
  C* object_;
  Method method_;
};

template <class D>
class ZnData {
 public:
  explicit ZnData(D value) : data_(value) {}
  D data() const { return data_; }

 private:
  D data_;
};

template <class T, class D>
class ZnBaseCallbackWithData : public ZnCallback<T>, public ZnData<D> {
 public:
  explicit ZnBaseCallbackWithData(D data) : ZnData<D>(data) {}
};

// Calls object->method(this, value, data).
template <class T, class C, class D>
class ZnCallbackWithData : public ZnBaseCallbackWithData<T, D> {
 public:
  using Method = void (C::*)(ZnCallback<T>*, T, D);
  ZnCallbackWithData(C* object, Method method, D data)
      : ZnBaseCallbackWithData<T, D>(data), object_(object), method_(method) {}
  void Dispatch(T value) override { (object_->*method_)(this, value, this->data()); }

 private:
  C* object_;
  Method method_;
};
