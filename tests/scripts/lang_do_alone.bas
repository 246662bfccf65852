Do
