"""The exception the library's error statuses become."""


class OrvError(RuntimeError):
    """A library call returned an error status.

    Attributes: ``status`` (the negative status code) and ``message`` (the
    function's name and the library's text for the status).
    """

    def __init__(self, status, message):
        super().__init__(message)
        self.status = int(status)
        self.message = message

    def __reduce__(self):
        return (type(self), (self.status, self.message))
